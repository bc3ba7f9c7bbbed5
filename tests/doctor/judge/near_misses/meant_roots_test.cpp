#include "doctor/judge/near_misses/meant_roots.h"

#include <gtest/gtest.h>

#include "doctor/judge/words/text.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

using Roots = std::vector<std::string>;

Roots MeantBy(const std::string& settings) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "settings.ini", settings);
  return MeantRoots(ExamineSettings(folder / "settings.ini"), nullptr);
}

TEST(MeantRoots, AreWhatTheLinesNameWithoutTheirMistakes) {
  EXPECT_EQ(MeantBy("DotnetRootFolder=/r\r\n"), Roots{"/r"});
  EXPECT_EQ(MeantBy("export DotnetRotFolder = \"/r\"\n"), Roots{"/r"});
  EXPECT_EQ(MeantBy("DotnetRootFolder=/a\nDotnetRootFolder=/b\n"), Roots{"/a"});
}

TEST(MeantRoots, LackWhatALaunchTakesAndOtherKeys) {
  EXPECT_EQ(MeantBy("DotnetRootFolder=/r\nLoaderLoggingDir=/l \nX=/x\n"), Roots{});
  EXPECT_EQ(MeantBy("DotnetRootFolder=\n"), Roots{});
}

TEST(MeantRoots, HoldTheInstallationThatTheRootIsInsideOf) {
  tests::RuntimeTree tree;
  tree.AddHost("6.0.1");
  const std::string root = tree.Root();
  const RuntimeReport runtime = ExamineRuntime(ToUtf16(root + "/host/fxr"), {});

  EXPECT_EQ(MeantRoots({}, &runtime), Roots{root});
  EXPECT_EQ(RootAround(ExamineRuntime(ToUtf16(root), {})), "");
}

}  // namespace
}  // namespace doctor
