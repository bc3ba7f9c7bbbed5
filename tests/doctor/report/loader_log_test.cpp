#include "doctor/report/loader_log.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <iterator>

#include "tests/doctor/installation.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/settings_file.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using tests::Installation;
using tests::TempFolder;

constexpr auto kLong = 60s;
const Walk kInstalled{std::string(tests::kSettingsPath)};

// The path of a log that is whole.
std::string Written(const std::string& file, const Walk& walk) {
  const LoaderLog log = WriteLoaderLog(file, walk, {kLong});
  EXPECT_EQ(log.failure, "");
  return log.file;
}

bool Holds(const fs::path& file, std::string_view words) {
  return tests::ReadFile(file).find(words) != std::string::npos;
}

TEST(LoaderLog, IsTheLaunchersOwnUpToTheContextAndRunsNothing) {
  Installation installation;
  installation.Healthy();
  const tests::StandInHost host;
  const tests::ScopedEnvironment environment(host.Environment());
  const TempFolder folder;

  const std::string path = Written(folder / "walk.log", kInstalled);

  EXPECT_EQ(path, folder / "walk.log");
  EXPECT_TRUE(Holds(path, "6.0.36")) << tests::ReadFile(path);
  EXPECT_EQ(host.Call("initialize").arguments.at(0), std::string(tests::kApplication) + ".dll");
  EXPECT_EQ(host.VersionThatRan(), "");
}

TEST(LoaderLog, ItsNameEndsInLogAndItsPathIsWhole) {
  const Installation installation;
  const TempFolder folder;
  const auto relative = fs::relative(folder.Path());

  EXPECT_EQ(Written(folder / "walk.txt", kInstalled), folder / "walk.txt.log");
  EXPECT_EQ(Written(relative / "x/../near", kInstalled), folder / "near.log");
  EXPECT_TRUE(fs::exists(folder / "walk.txt.log"));
  EXPECT_TRUE(fs::exists(folder / "near.log"));
}

TEST(LoaderLog, AnotherRootTakesThePlaceOfTheSettings) {
  Installation installation;
  installation.Healthy().Settings("DotnetRootFolder=/nothing/there\n");
  const TempFolder folder;

  const std::string other = Written(folder / "other", {kInstalled.settings_path, u"/opt/morvath/dotnet"});
  const std::string installed = Written(folder / "installed", kInstalled);
  const std::string none = Written(folder / "none", {kInstalled.settings_path, u""});

  EXPECT_TRUE(Holds(other, "6.0.36"));
  EXPECT_FALSE(Holds(installed, "6.0.36"));
  EXPECT_FALSE(Holds(none, "host/fxr"));
}

TEST(LoaderLog, IsOfTheSettingsThatAreAskedAbout) {
  Installation installation;
  installation.Healthy().Settings("DotnetRootFolder=/nothing/there\n");
  const TempFolder folder;
  tests::WriteFile(folder / "other.ini", "Other=1\nDotnetRootFolder=" + std::string(tests::kRoot) + "\n");

  const std::string path = Written(folder / "walk", {folder / "other.ini"});

  EXPECT_TRUE(Holds(path, "LoadSettingsFromFile: process line 'Other=(hidden)'")) << tests::ReadFile(path);
  EXPECT_TRUE(Holds(path, "Settings loaded from '" + (folder / "other.ini").string() + "'"));
  EXPECT_TRUE(Holds(path, "6.0.36"));
}

TEST(LoaderLog, EndsWhereTheSettingsEndALaunch) {
  const Installation installation;
  const TempFolder folder;

  const std::string path = Written(folder / "walk", {"/nothing/there"});

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

  Written(folder / "walk", kInstalled);

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

  const std::string path = Written(folder / "walk", kInstalled);

  EXPECT_TRUE(Holds(path, "6.0.99"));
}

TEST(LoaderLog, OneThatHasNoPlaceIsAFailureAndNothingIsWritten) {
  const Installation installation;
  const TempFolder folder;
  fs::create_directories(folder / "folder.log");
  fs::create_symlink("/nothing/there", folder / "dangling.log");
  ASSERT_EQ(::mkfifo((folder / "pipe.log").c_str(), 0666), 0);
  struct Row {
    std::string asked, file, failure;
  };
  const Row rows[] = {
      {folder / "folder.log", folder / "folder.log", "it is a folder"},
      {folder / "folder", folder / "folder.log", "it is a folder"},
      {folder.Path() / "", folder.Path() / "", "it is a folder"},
      {".", ".", "it is a folder"},
      {"..", "..", "it is a folder"},
      {folder / "not-there/", (folder / "not-there/").string(), "it is a folder"},
      {folder / "dangling", folder / "dangling.log", "No such file or directory"},
      {folder / "not-there/walk", folder / "not-there/walk.log", "No such file or directory"},
      {folder / "pipe.log", folder / "pipe.log", "it is not a regular file"},
      {folder / "pipe", folder / "pipe.log", "it is not a regular file"},
      {"/dev/stdout", "/dev/stdout", "it is not a regular file"},
      {"/dev/full", "/dev/full", "it is not a regular file"},
      {folder / "caf\xe9.log", folder / "caf\xe9.log", "its name is not UTF-8"},
  };
  const auto before = std::distance(fs::directory_iterator(folder.Path()), fs::directory_iterator());
  for (const Row& row : rows) {
    const LoaderLog log = WriteLoaderLog(row.asked, kInstalled, {kLong});

    EXPECT_EQ(log.file, row.file);
    EXPECT_EQ(log.failure, row.failure) << row.file;
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), fs::directory_iterator()), before);
}

TEST(LoaderLog, AnOlderOneAndALinkAreWrittenTo) {
  const Installation installation;
  const TempFolder folder;
  tests::WriteFile(folder / "old.log", std::string(100'000, 'x'));
  fs::create_symlink(folder / "old.log", folder / "link.log");

  EXPECT_EQ(Written(folder / "link", kInstalled), folder / "link.log");

  EXPECT_TRUE(Holds(folder / "old.log", "Log has been created"));
  EXPECT_FALSE(Holds(folder / "old.log", "xxx"));
}

TEST(LoaderLog, OneThatADiskHasNoRoomForIsAFailure) {
  Installation installation;
  installation.Healthy().Settings(std::string(50'000, '\n') + "DotnetRootFolder=/opt/morvath/dotnet\n");
  fs::create_directories("/opt/morvath/small");
  ASSERT_EQ(::mount("none", "/opt/morvath/small", "tmpfs", 0, "size=16k"), 0);

  const LoaderLog log = WriteLoaderLog("/opt/morvath/small/walk", kInstalled, {kLong});

  EXPECT_EQ(log.file, "/opt/morvath/small/walk.log");
  EXPECT_EQ(log.failure, "No space left on device");
  EXPECT_EQ(::umount("/opt/morvath/small"), 0);
}

TEST(LoaderLog, OneThatNoProcessCanWriteIsAFailureAndAnOlderOneIsGone) {
  const Installation installation;
  const TempFolder folder;
  tests::WriteFile(folder / "walk.log", "older");

  const ChildResult outer = RunInChild(
      [&]() -> Answer {
        const int next = ::dup(STDIN_FILENO);
        ::close(next);
        // The log takes one descriptor more; hearing a process takes two.
        const rlimit files{static_cast<rlim_t>(next) + 2, static_cast<rlim_t>(next) + 2};
        ::setrlimit(RLIMIT_NOFILE, &files);
        return {WriteLoaderLog(folder / "walk", kInstalled, {kLong}).failure};
      },
      kLong);

  EXPECT_EQ(outer.answer, Answer{"no process can be started: Too many open files"});
  EXPECT_EQ(tests::ReadFile(folder / "walk.log"), "");
}

TEST(LoaderLog, OneOfAWalkThatDoesNotFinishIsAFailure) {
  Installation installation;
  installation.Healthy().OddHost("6.0.99", "comes_Hang");
  const TempFolder folder;

  EXPECT_EQ(WriteLoaderLog(folder / "walk", kInstalled, {500ms}).failure, "the walk did not finish within 0.5 s");
}

TEST(LoaderLog, SaysThatTheSettingsCannotBeRead) {
  const Installation installation;
  const TempFolder folder;

  const std::string path = Written(folder / "walk", {"/proc/self/mem"});

  EXPECT_TRUE(Holds(path, "LoadSettingsFromFile: Failed to read file by path '/proc/self/mem', error 5"));
}

TEST(LoaderLogText, IsThatOfTheLogOfWhichNothingIsLeft) {
  Installation installation;
  installation.Healthy();
  const TempFolder folder;
  tests::ScopedEnvironment environment;
  environment.Set("TMPDIR", folder.Path().string());

  EXPECT_NE(LoaderLogText(kInstalled, {kLong}).find("6.0.36"), std::string::npos);
  EXPECT_TRUE(fs::is_empty(folder.Path()));
}

TEST(LoaderLogText, SaysWhyItCannotBeWritten) {
  tests::ScopedEnvironment environment;
  environment.Set("TMPDIR", "/nothing/there");

  EXPECT_EQ(LoaderLogText(kInstalled, {kLong}), "There is no folder to write it to: No such file or directory\n");
}

}  // namespace
}  // namespace doctor
