#include "doctor/report/loader_log.h"

#include <gtest/gtest.h>

#include <chrono>
#include <system_error>

#include "tests/doctor/server.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

using namespace std::chrono_literals;
using tests::Server;
using tests::TempFolder;

constexpr auto kLong = 60s;

bool Holds(const std::filesystem::path& file, std::string_view words) {
  return tests::ReadFile(file).find(words) != std::string::npos;
}

TEST(LoaderLog, IsTheLaunchersOwnUpToTheContextAndRunsNothing) {
  Server server;
  server.Healthy();
  const tests::StandInHost host;
  const tests::ScopedEnvironment environment(host.Environment());
  const TempFolder folder;

  const std::string path = WriteLoaderLog(folder / "walk.log", {}, kLong);

  EXPECT_EQ(path, folder / "walk.log");
  EXPECT_TRUE(Holds(path, "6.0.36")) << tests::ReadFile(path);
  EXPECT_EQ(host.Call("initialize").arguments.at(0), std::string(tests::kApplication) + ".dll");
  EXPECT_EQ(host.VersionThatRan(), "");
}

TEST(LoaderLog, ItsNameEndsInLogAndItsPathIsWhole) {
  const Server server;
  const TempFolder folder;
  const auto relative = std::filesystem::relative(folder.Path());

  EXPECT_EQ(WriteLoaderLog(folder / "walk.txt", {}, kLong), folder / "walk.txt.log");
  EXPECT_EQ(WriteLoaderLog(relative / "x/../near", {}, kLong), folder / "near.log");
  EXPECT_TRUE(std::filesystem::exists(folder / "walk.txt.log"));
  EXPECT_TRUE(std::filesystem::exists(folder / "near.log"));
}

TEST(LoaderLog, AnotherRootTakesThePlaceOfTheSettings) {
  Server server;
  server.Healthy().Settings("DotnetRootFolder=/nothing/there\n");
  const TempFolder folder;

  const std::string other = WriteLoaderLog(folder / "other", {tov::WideString(u"/opt/morvath/dotnet")}, kLong);
  const std::string installed = WriteLoaderLog(folder / "installed", {}, kLong);
  const std::string none = WriteLoaderLog(folder / "none", {tov::WideString()}, kLong);

  EXPECT_TRUE(Holds(other, "6.0.36"));
  EXPECT_FALSE(Holds(installed, "6.0.36"));
  EXPECT_FALSE(Holds(none, "host/fxr"));
}

TEST(LoaderLog, EndsWhereALibraryEndsTheProcess) {
  Server server;
  server.Healthy().OddHost("6.0.99", "comes_Exit");
  const TempFolder folder;

  const std::string path = WriteLoaderLog(folder / "walk", {}, kLong);

  EXPECT_TRUE(Holds(path, "6.0.99"));
}

TEST(LoaderLog, OneThatCannotBeWrittenIsAFailure) {
  const Server server;

  EXPECT_THROW(WriteLoaderLog("/proc/nothing/walk.log", {}, kLong), std::system_error);
}

}  // namespace
}  // namespace doctor
