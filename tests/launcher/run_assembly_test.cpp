// The calls that the host gets, and what becomes of its library.
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "tests/support/launcher.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/settings_file.h"

namespace tests {
namespace {

using Texts = std::vector<std::string>;

// Settings that name a runtime root in which a test puts what it needs.
struct EmptyInstallation {
  RuntimeTree runtime;
  StandInHost host;
  SettingsFile settings = SettingsFile::ForRoot(runtime.Root());
};

std::size_t Count(const std::string& text, const std::string& what) {
  std::size_t count = 0;
  for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) {
    ++count;
  }
  return count;
}

TEST(RunAssembly, ThreeCallsAndTheLibraryComesAndGoes) {
  EmptyInstallation world;
  world.runtime.AddHost("6.0.36");

  EXPECT_TRUE(EndedSilently(Launcher(world.host).Run(), 0));
  EXPECT_EQ(world.host.Story(),
            (Texts{"6.0.36 loaded", "6.0.36 initialize", "6.0.36 run_app", "6.0.36 close", "6.0.36 unloaded"}));
}

TEST(RunAssembly, TheHostIsGivenItsOwnPathTheRootAndTheSizeOfTheRecord) {
  EmptyInstallation world;
  world.runtime.AddHost("6.0.36");

  EXPECT_TRUE(EndedSilently(Launcher(world.host).Run(), 0));
  const HostCall call = world.host.Call("initialize");
  EXPECT_EQ(call.fields.at("size"), "24");
  EXPECT_EQ(call.fields.at("host_path"), world.runtime.HostFile("6.0.36"));
  EXPECT_EQ(call.fields.at("dotnet_root"), world.runtime.Root());
  EXPECT_EQ(call.fields.at("handle"), "(nil)");
}

TEST(RunAssembly, ASlashAtTheEndOfTheRootIsKeptInTheRootAndNotDoubledInThePath) {
  EmptyInstallation world;
  world.runtime.AddHost("6.0.36");
  world.settings.Write("DotnetRootFolder=" + world.runtime.Root().string() + "/\n");

  EXPECT_TRUE(EndedSilently(Launcher(world.host).Run(), 0));
  EXPECT_EQ(world.host.Call("initialize").fields.at("dotnet_root"), world.runtime.Root().string() + "/");
  EXPECT_EQ(world.host.Call("initialize").fields.at("host_path"), world.runtime.HostFile("6.0.36"));
}

TEST(RunAssembly, TheHandleThatInitialisingGaveIsRunAndClosed) {
  EmptyInstallation world;
  world.runtime.AddHost("6.0.36");

  EXPECT_TRUE(EndedSilently(Launcher(world.host).Run(), 0));
  EXPECT_NE(world.host.Call("run_app").fields.at("handle"), "(nil)");
  EXPECT_EQ(world.host.Call("run_app").fields.at("handle"), world.host.Call("close").fields.at("handle"));
}

TEST(RunAssembly, EveryResultButZeroIsDeliberatelyAFailureAndNothingIsRunOrClosed) {
  for (const int result : {1, 2, 3, -1, INT_MAX, INT_MIN, static_cast<int>(0x80008096)}) {
    SCOPED_TRACE(result);
    EmptyInstallation world;
    world.runtime.AddHost("6.0.36").AddHost("6.0.1");
    world.host.Returns(HostFunction::kInitialize, result);

    EXPECT_TRUE(EndedSilently(Launcher(world.host).Run(), 255));
    EXPECT_EQ(world.host.Story(), (Texts{"6.0.36 loaded", "6.0.36 initialize", "6.0.36 unloaded"}));
  }
}

TEST(RunAssembly, ANullHandleIsAFailureAlthoughTheResultIsZero) {
  EmptyInstallation world;
  world.runtime.AddHost("6.0.36");
  world.host.GivesNoHandle();

  EXPECT_TRUE(EndedSilently(Launcher(world.host).Run(), 255));
  EXPECT_EQ(world.host.Story(), (Texts{"6.0.36 loaded", "6.0.36 initialize", "6.0.36 unloaded"}));
}

TEST(RunAssembly, WhatTheHostSaysReachesStandardErrorAsItIs) {
  EmptyInstallation world;
  world.runtime.AddHost("6.0.36");
  world.host.Says(HostFunction::kInitialize, "no such framework").Returns(HostFunction::kInitialize, -1);

  const auto outcome = Launcher(world.host).Run();

  EXPECT_EQ(outcome.status, 255);
  EXPECT_EQ(outcome.err, "no such framework\n");
}

TEST(RunAssembly, TheContextIsClosedWhateverTheApplicationReturned) {
  EmptyInstallation world;
  world.runtime.AddHost("6.0.36");
  world.host.Returns(HostFunction::kRun, -7);

  EXPECT_TRUE(EndedSilently(Launcher(world.host).Run(), 0));
  EXPECT_EQ(world.host.Story().at(3), "6.0.36 close");
}

TEST(RunAssembly, ALibraryThatLacksAFunctionIsUnloadedBeforeTheNextOneIsTried) {
  for (const HostVariant variant : {HostVariant::kLacksInitialize, HostVariant::kLacksRun, HostVariant::kLacksClose}) {
    SCOPED_TRACE(static_cast<int>(variant));
    EmptyInstallation world;
    world.runtime.AddHost("6.0.2", variant).AddHost("6.0.1");

    EXPECT_TRUE(EndedSilently(Launcher(world.host).Run(), 0));
    EXPECT_EQ(world.host.Story(), (Texts{"6.0.2 loaded", "6.0.2 unloaded", "6.0.1 loaded", "6.0.1 initialize",
                                         "6.0.1 run_app", "6.0.1 close", "6.0.1 unloaded"}));
  }
}

TEST(RunAssembly, ALibraryWhoseFunctionIsNullIsUnloadedLikeOneThatLacksIt) {
  EmptyInstallation world;
  world.runtime.AddHost("6.0.2", HostVariant::kNullRun).AddHost("6.0.1");

  EXPECT_TRUE(EndedSilently(Launcher(world.host).Run(), 0));
  EXPECT_EQ(world.host.Story(), (Texts{"6.0.2 loaded", "6.0.2 unloaded", "6.0.1 loaded", "6.0.1 initialize",
                                       "6.0.1 run_app", "6.0.1 close", "6.0.1 unloaded"}));
}

TEST(RunAssembly, ALibraryWhoseFunctionIsNullWithoutAnErrorTextDeliberatelyStaysOpen) {
  EmptyInstallation world;
  world.runtime.AddHost("6.0.2", HostVariant::kNullRun).AddHost("6.0.1");

  const auto outcome = Launcher(world.host)
                           .Variable("LD_PRELOAD", QUIET_DLERROR)
                           .Variable("ASAN_OPTIONS", "verify_asan_link_order=0")
                           .Run();

  EXPECT_TRUE(EndedSilently(outcome, 0));
  EXPECT_EQ(world.host.Story(), (Texts{"6.0.2 loaded", "6.0.1 loaded", "6.0.1 initialize", "6.0.1 run_app",
                                       "6.0.1 close", "6.0.1 unloaded", "6.0.2 unloaded"}));
}

TEST(RunAssembly, TheLibraryIsClosedExactlyOnceAndBeforeTheProcessEnds) {
  EmptyInstallation world;
  world.runtime.AddHost("6.0.36");
  const TempFolder folder;

  const auto outcome =
      Launcher(world.host).Variable("LD_DEBUG", "files").Variable("LD_DEBUG_OUTPUT", folder / "loader").Run();

  ASSERT_TRUE(EndedSilently(outcome, 0));
  std::string told;
  for (const auto& file : std::filesystem::directory_iterator(folder.Path())) {
    told += ReadFile(file.path());
  }
  const std::string library = "file=" + world.runtime.HostFile("6.0.36").string() + " [0];  ";
  EXPECT_EQ(Count(told, library + "generating link map"), 1U) << told;
  EXPECT_EQ(Count(told, library + "destroying link map"), 1U) << told;
}

TEST(RunAssembly, TheAssemblyNeedNotBeThereForTheHostToBeAsked) {
  EmptyInstallation world;
  world.runtime.AddHost("6.0.36");
  ASSERT_FALSE(std::filesystem::exists("/opt/morvath/quor"));

  EXPECT_TRUE(EndedSilently(Launcher(world.host).Run(), 0));
  EXPECT_EQ(world.host.Call("initialize").arguments, Texts{"/opt/morvath/quor/lib64/grellin_utils.dll"});
}

}  // namespace
}  // namespace tests
