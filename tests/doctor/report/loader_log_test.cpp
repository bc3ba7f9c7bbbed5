#include "doctor/report/loader_log.h"

#include <gtest/gtest.h>

#include <chrono>
#include <system_error>

#include "tests/doctor/installation.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/settings_file.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

using namespace std::chrono_literals;
using tests::Installation;
using tests::TempFolder;

constexpr auto kLong = 60s;
const Walk kInstalled{std::string(tests::kSettingsPath)};

bool Holds(const std::filesystem::path& file, std::string_view words) {
  return tests::ReadFile(file).find(words) != std::string::npos;
}

TEST(LoaderLog, IsTheLaunchersOwnUpToTheContextAndRunsNothing) {
  Installation installation;
  installation.Healthy();
  const tests::StandInHost host;
  const tests::ScopedEnvironment environment(host.Environment());
  const TempFolder folder;

  const std::string path = WriteLoaderLog(folder / "walk.log", kInstalled, {kLong});

  EXPECT_EQ(path, folder / "walk.log");
  EXPECT_TRUE(Holds(path, "6.0.36")) << tests::ReadFile(path);
  EXPECT_EQ(host.Call("initialize").arguments.at(0), std::string(tests::kApplication) + ".dll");
  EXPECT_EQ(host.VersionThatRan(), "");
}

TEST(LoaderLog, ItsNameEndsInLogAndItsPathIsWhole) {
  const Installation installation;
  const TempFolder folder;
  const auto relative = std::filesystem::relative(folder.Path());

  EXPECT_EQ(WriteLoaderLog(folder / "walk.txt", kInstalled, {kLong}), folder / "walk.txt.log");
  EXPECT_EQ(WriteLoaderLog(relative / "x/../near", kInstalled, {kLong}), folder / "near.log");
  EXPECT_TRUE(std::filesystem::exists(folder / "walk.txt.log"));
  EXPECT_TRUE(std::filesystem::exists(folder / "near.log"));
}

TEST(LoaderLog, AnotherRootTakesThePlaceOfTheSettings) {
  Installation installation;
  installation.Healthy().Settings("DotnetRootFolder=/nothing/there\n");
  const TempFolder folder;

  const std::string other =
      WriteLoaderLog(folder / "other", {kInstalled.settings_path, u"/opt/morvath/dotnet"}, {kLong});
  const std::string installed = WriteLoaderLog(folder / "installed", kInstalled, {kLong});
  const std::string none = WriteLoaderLog(folder / "none", {kInstalled.settings_path, u""}, {kLong});

  EXPECT_TRUE(Holds(other, "6.0.36"));
  EXPECT_FALSE(Holds(installed, "6.0.36"));
  EXPECT_FALSE(Holds(none, "host/fxr"));
}

TEST(LoaderLog, IsOfTheSettingsThatAreAskedAbout) {
  Installation installation;
  installation.Healthy().Settings("DotnetRootFolder=/nothing/there\n");
  const TempFolder folder;
  tests::WriteFile(folder / "other.ini", "Other=1\nDotnetRootFolder=" + std::string(tests::kRoot) + "\n");

  const std::string path = WriteLoaderLog(folder / "walk", {folder / "other.ini"}, {kLong});

  EXPECT_TRUE(Holds(path, "LoadSettingsFromFile: process line 'Other=1'")) << tests::ReadFile(path);
  EXPECT_TRUE(Holds(path, "Settings loaded from '" + (folder / "other.ini").string() + "'"));
  EXPECT_TRUE(Holds(path, "6.0.36"));
}

TEST(LoaderLog, EndsWhereTheSettingsEndALaunch) {
  const Installation installation;
  const TempFolder folder;

  const std::string path = WriteLoaderLog(folder / "walk", {"/nothing/there"}, {kLong});

  EXPECT_TRUE(Holds(path, "LoadSettingsFromFile: Failed to open file by path '/nothing/there'"));
  EXPECT_FALSE(Holds(path, "InitAndLoadAssembly"));
}

TEST(LoaderLog, TheHostFindsTheEnvironmentOfALaunch) {
  Installation installation;
  installation.Healthy();
  const tests::StandInHost host;
  tests::ScopedEnvironment environment(host.Environment());
  environment.Set("DOTNET_MULTILEVEL_LOOKUP", "1").Set("DOTNET_STARTUP_HOOKS", "/x").Set("COMPlus_GCName", "x");
  environment.Set("DOTNET_GCName", "x").Set("DOTNET_EnableDiagnostics", "1").Set("DOTNET_gcServer", "1");
  const TempFolder folder;

  WriteLoaderLog(folder / "walk", kInstalled, {kLong});

  const tests::HostCall loaded = host.Call("loaded");
  EXPECT_EQ(loaded.Variable("DOTNET_MULTILEVEL_LOOKUP"), "0");
  EXPECT_EQ(loaded.Variable("DOTNET_EnableDiagnostics"), "0");
  EXPECT_EQ(loaded.Variable("DOTNET_STARTUP_HOOKS"), "(not set)");
  EXPECT_EQ(loaded.Variable("COMPlus_GCName"), "(not set)");
  EXPECT_EQ(loaded.Variable("DOTNET_GCName"), "(not set)");
  EXPECT_EQ(loaded.Variable("DOTNET_gcServer"), "1");
  EXPECT_EQ(host.Call("initialize").environment, loaded.environment);
  EXPECT_EQ(tests::Variable("DOTNET_STARTUP_HOOKS"), "/x") << "the doctor's own stays";
}

TEST(LoaderLog, EndsWhereALibraryEndsTheProcess) {
  Installation installation;
  installation.Healthy().OddHost("6.0.99", "comes_Exit");
  const TempFolder folder;

  const std::string path = WriteLoaderLog(folder / "walk", kInstalled, {kLong});

  EXPECT_TRUE(Holds(path, "6.0.99"));
}

TEST(LoaderLog, OneThatCannotBeWrittenIsAFailure) {
  const Installation installation;

  EXPECT_THROW(WriteLoaderLog("/proc/nothing/walk.log", kInstalled, {kLong}), std::system_error);
}

}  // namespace
}  // namespace doctor
