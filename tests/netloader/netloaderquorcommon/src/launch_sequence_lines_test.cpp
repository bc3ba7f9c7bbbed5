// The lines of a whole launch, which would be discarded: here the logger of the test stays installed. Every test runs
// in a process of its own, as the settings are read once.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "netloader/netloaderquorcommon/src/launch_sequence.h"
#include "tests/netloader/netloaderhostfxr/src/loader_world.h"
#include "tests/netloader/netloaderquorcommon/src/kept_logger.h"
#include "tests/support/settings_file.h"

namespace netloader::quor {
namespace {

using tests::HostFunction;
using tests::Lines;
using tests::LoaderWorld;
using tests::SettingsFile;
using tests::operator+;

const std::string kPath(tests::kSettingsPath);
const std::string kLoadedFromLine = "TRACE\tSettings loaded from '" + kPath + "'";
constexpr const char* kStartingLine = "TRACE\tInitAndLoadAssembly: Starting ...";

// Both settings steps of a launch whose file has one line.
Lines LoggingLines(const std::string& key, const std::string& value) {
  return {"TRACE\tInitNetloaderLoggingSettingsOrUseDefault: Start initializing logging settings",
          "TRACE\tLoadSettingsFromFile: process line '" + key + "=" + value + "'",
          "TRACE\tLoadSettingsFromFile: key = '" + key + "', value = '" + value + "'",
          "TRACE\tLoadSettingsFromFile: settings loaded",
          kLoadedFromLine,
          "ERROR\tTryInitNetloaderLoggingSettingsImpl: Failed to get logger folder path from file",
          "TRACE\tInitNetloaderLoggingSettingsOrUseDefault: logging settings set",
          kStartingLine,
          "TRACE\tTryInitNetloaderSettings: Start initializing dotnet settings",
          "TRACE\tLoadSettingsFromFile: settings already loaded",
          kLoadedFromLine};
}

Lines RootLines(const std::string& root) {
  const std::string folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  return {"TRACE\tTryInitNetloaderSettingsImpl: using dotnet root path = '" + root + "'",
          "TRACE\tTryInitNetloaderSettings: dotnet settings set",
          "TRACE\tLoaderModule: Created with params: dotnetRootPath = '" + root +
              "', dotnetVersionPrefix = '6.0.', productRoot = '" + folder + "', hostFxrSegment = 'libhostfxr.so'"};
}

std::string FactoryTail() {
  return ", versionPrefix = '6.0.', productRoot = '" +
         std::filesystem::read_symlink("/proc/self/exe").parent_path().string() + "'";
}

std::shared_ptr<LibraryInterface> Launch() {
  return InitAndLoadAssembly(u"grellin_loader", u"app.dll", 0, nullptr, {});
}

// The lines from the settings to the bound host.
Lines BoundLines(const LoaderWorld& world) {
  const std::string root = world.runtime.Root();
  return LoggingLines("DotnetRootFolder", root) + RootLines(root) + world.FoundLines("6.0.1", true) +
         Lines{world.AttemptLine("6.0.1")} + LoaderWorld::LoadedLines(world.File("6.0.1")) +
         Lines{world.SuccessLine("6.0.1"),
               "TRACE\tLoaderModuleFactory: Module from '" + root + "' has been loaded successfully" + FactoryTail(),
               "TRACE\tLoaderModule: Loading library: 'app.dll'",
               "TRACE\tLoaderModule: Loading library from path: '/opt/morvath/quor/lib64/app.dll'"};
}

TEST(LaunchLines, OfASuccessfulLaunchEndWithTheContext) {
  LoaderWorld world;
  world.runtime.AddHost("6.0.1");
  const SettingsFile settings = SettingsFile::ForRoot(world.runtime.Root());

  EXPECT_NE(Launch(), nullptr);

  EXPECT_EQ(world.log.Lines(),
            (BoundLines(world) +
             Lines{"TRACE\tLoaderModule: Library context (hostfxr_handle) has been obtained successfully"}));
  EXPECT_EQ(tests::EmptyLoggersInstalled(), 1);
}

TEST(LaunchLines, OfAnAssemblyThatCannotBeLoadedEndWithTheLoadersReason) {
  LoaderWorld world;
  world.runtime.AddHost("6.0.1");
  world.host.Returns(HostFunction::kInitialize, 2).SetsErrno(HostFunction::kInitialize, 0);
  world.Apply();
  const SettingsFile settings = SettingsFile::ForRoot(world.runtime.Root());

  EXPECT_EQ(Launch(), nullptr);

  EXPECT_EQ(world.log.Lines(),
            (BoundLines(world) + Lines{"ERROR\tLoaderModule: Get library context (hostfxr_handle) failed for library: "
                                       "'/opt/morvath/quor/lib64/app.dll', result 2, lastErrorCode 0"}));
}

TEST(LaunchLines, OfALaunchWithoutAHostEndWithOneErrorOfTheSequence) {
  const LoaderWorld world;
  const std::string root = world.runtime.Root();
  const SettingsFile settings = SettingsFile::ForRoot(root);

  EXPECT_EQ(Launch(), nullptr);

  EXPECT_EQ(world.log.Lines(), (LoggingLines("DotnetRootFolder", root) + RootLines(root) +
                                Lines{LoaderWorld::NothingLoadedLine(),
                                      "TRACE\tLoaderModuleFactory: Failed to load module from '" + root + FactoryTail(),
                                      "ERROR\tInitAndLoadAssembly: Failed to create dotnet loader ..."}));
}

TEST(LaunchLines, OfALaunchWithoutARootEndWithOneErrorOfTheSequence) {
  const LoaderWorld world;
  const SettingsFile settings("k=v\n");

  EXPECT_EQ(Launch(), nullptr);

  EXPECT_EQ(world.log.Lines(), (LoggingLines("k", "v") +
                                Lines{"ERROR\tTryInitNetloaderSettingsImpl: Failed to get dotnet root path from file",
                                      "TRACE\tTryInitNetloaderSettings: loading dotnet settings failed",
                                      "ERROR\tInitAndLoadAssembly: Failed to load settings ..."}));
}

}  // namespace
}  // namespace netloader::quor
