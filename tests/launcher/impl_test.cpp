// The top-level run, line by line. Every test runs in a process of its own, as the settings are read once.
#include "launcher/impl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "tests/netloader/netloaderhostfxr/src/interposed_calls.h"
#include "tests/netloader/netloaderhostfxr/src/loader_world.h"
#include "tests/netloader/netloaderquorcommon/src/kept_logger.h"
#include "tests/support/settings_file.h"

namespace {

using tests::HostFunction;
using tests::Lines;
using tests::LoaderWorld;
using tests::SettingsFile;

constexpr const char* kStartingLine = "TRACE\tGrellinLoader: Starting assembly entry point ...";
constexpr const char* kFinishedLine = "TRACE\tGrellinLoader: Assembly has finished it's work ...";
constexpr const char* kFailedLine = "ERROR\tGrellinLoader: Failed to load assembly ...";
constexpr const char* kAssembly = "/opt/morvath/quor/lib64/grellin_utils.dll";

int RunWith(std::vector<std::string> arguments) {
  std::vector<char*> argv;
  for (std::string& argument : arguments) {
    argv.push_back(argument.data());
  }
  argv.push_back(nullptr);
  return Impl(static_cast<int>(arguments.size()), argv.data());
}

// The launcher's own lines.
Lines OwnLines(const LoaderWorld& world) {
  EXPECT_EQ(tests::EmptyLoggersInstalled(), 1);
  Lines lines = world.log.Lines();
  std::erase_if(lines, [](const std::string& line) { return line.find("GrellinLoader: ") == std::string::npos; });
  return lines;
}

class ImplTest : public testing::Test {
 protected:
  ImplTest() { world_.runtime.AddHost("6.0.1"); }

  LoaderWorld world_;
  SettingsFile settings_ = SettingsFile::ForRoot(world_.runtime.Root());
};

TEST_F(ImplTest, RunsTheProductsAssemblyBetweenTwoLines) {
  EXPECT_EQ(RunWith({"grellin_loader"}), 0);

  EXPECT_EQ(OwnLines(world_), (Lines{kStartingLine, kFinishedLine}));
  EXPECT_EQ(world_.host.Story(),
            (Lines{"6.0.1 loaded", "6.0.1 initialize", "6.0.1 run_app", "6.0.1 close", "6.0.1 unloaded"}));
}

TEST_F(ImplTest, PassesTheArgumentsWithoutTheProgramsName) {
  EXPECT_EQ(RunWith({"grellin_loader", "a", "b"}), 0);

  EXPECT_EQ(world_.host.Call("initialize").arguments, (Lines{kAssembly, "a", "b"}));
}

TEST_F(ImplTest, WithoutArgumentsOrEvenANamePassesTheAssemblyAlone) {
  EXPECT_EQ(RunWith({}), 0);
  EXPECT_EQ(RunWith({"grellin_loader"}), 0);

  for (const tests::HostCall& call : world_.host.Calls()) {
    if (call.name == "initialize") {
      EXPECT_EQ(call.arguments, Lines{kAssembly});
    }
  }
}

TEST_F(ImplTest, SwitchesTheRuntimesDiagnosticsOff) {
  tests::ScopedEnvironment environment;
  environment.Set("DOTNET_EnableDiagnostics", "1");

  EXPECT_EQ(RunWith({"grellin_loader"}), 0);

  EXPECT_EQ(world_.host.Call("loaded").Variable("DOTNET_EnableDiagnostics"), "0");
}

TEST_F(ImplTest, ReleasesTheApplicationAfterTheLastLine) {
  Lines lines;
  const tests::WatchedClosing watched([&] { lines = world_.log.Lines(); });

  EXPECT_EQ(RunWith({"grellin_loader"}), 0);

  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.back(), kFinishedLine);
}

TEST_F(ImplTest, IsNeverWhatTheApplicationOrItsClosingReturns) {
  world_.host.Returns(HostFunction::kRun, 3).Returns(HostFunction::kClose, 4);
  world_.Apply();

  EXPECT_EQ(RunWith({"grellin_loader"}), 0);

  EXPECT_EQ(OwnLines(world_), (Lines{kStartingLine, kFinishedLine}));
}

TEST_F(ImplTest, AnAssemblyThatCannotBeLoadedHasOneErrorLine) {
  world_.host.Returns(HostFunction::kInitialize, 1);
  world_.Apply();

  EXPECT_EQ(RunWith({"grellin_loader"}), -1);

  EXPECT_EQ(OwnLines(world_), (Lines{kFailedLine}));
  EXPECT_EQ(world_.log.Lines().back(), kFailedLine);
}

TEST_F(ImplTest, AnExceptionOfTheApplicationPassesAfterTheFirstLineAndLeavesTheHostLoaded) {
  world_.host.Throws(HostFunction::kRun, "the host's words");
  world_.Apply();

  EXPECT_THROW(RunWith({"grellin_loader"}), std::runtime_error);

  EXPECT_EQ(OwnLines(world_), (Lines{kStartingLine}));
  EXPECT_EQ(world_.host.Story().back(), "6.0.1 run_app");
}

TEST(ImplWithoutSettings, LetsTheFailurePass) {
  EXPECT_THROW(RunWith({"grellin_loader"}), std::system_error);
}

}  // namespace
