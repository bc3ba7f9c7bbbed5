// Whole launches under valgrind's memcheck: no memory is used that is not the process's own, or was never written.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/launcher.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/settings_file.h"

namespace tests {
namespace {

constexpr const char* kValgrind = "/usr/bin/valgrind";
constexpr int kFound = 99;  // An exit status that no launch has.

class Memcheck : public testing::Test {
 protected:
  void SetUp() override {
    if (IsSanitized()) {
      GTEST_SKIP() << "a sanitizer watches the memory itself";
    }
    if (!std::filesystem::exists(kValgrind)) {
      GTEST_SKIP() << "valgrind is not installed";
    }
  }

  [[nodiscard]] Outcome Launch(const std::string& leaks = "full") const {
    return Command(kValgrind)
        .Arguments({"--quiet", "--leak-check=" + leaks, "--errors-for-leak-kinds=definite",
                    "--error-exitcode=" + std::to_string(kFound), LauncherFile(), "one", "two"})
        .Variables(host_.Environment())
        .Run();
  }

  RuntimeTree runtime_;
  StandInHost host_;
  SettingsFile settings_ = SettingsFile::ForRoot(runtime_.Root());
};

TEST_F(Memcheck, FindsNothingInALaunchThatRunsTheApplication) {
  runtime_.AddHost("6.0.36");

  const Outcome launch = Launch();

  EXPECT_TRUE(EndedSilently(launch, 0));
  EXPECT_EQ(host_.VersionThatRan(), "6.0.36");
}

TEST_F(Memcheck, FindsNothingInALaunchThatPassesBrokenVersionsOver) {
  runtime_.AddHost("6.0.1");
  runtime_.AddHost("6.0.36", HostVariant::kLacksRun);
  runtime_.AddHostOfBytes("6.0.40", "no library");

  const Outcome launch = Launch();

  EXPECT_TRUE(EndedSilently(launch, 0));
  EXPECT_EQ(host_.VersionThatRan(), "6.0.1");
}

TEST_F(Memcheck, FindsNothingInALaunchThatTheHostRefuses) {
  runtime_.AddHost("6.0.36");
  host_.Returns(HostFunction::kInitialize, -1);

  EXPECT_TRUE(EndedSilently(Launch(), 255));
}

// What is thrown is not released before the abort, so leaks mean nothing there.
TEST_F(Memcheck, FindsNothingInALaunchThatEndsWithAnException) {
  settings_.Write("DotnetRootFolder=\xFF\n");

  const Outcome launch = Launch("no");

  EXPECT_EQ(launch.signal, SIGABRT) << launch;
  EXPECT_EQ(launch.err.find("=="), std::string::npos) << launch;
}

}  // namespace
}  // namespace tests
