// Which runtime is found, and in which order they are tried.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/launcher.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/settings_file.h"

namespace tests {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

// Launches over `runtime`; says how it ended and, through `host`, what was tried.
Outcome LaunchOver(const RuntimeTree& runtime, const StandInHost& host) {
  const auto settings = SettingsFile::ForRoot(runtime.Root());
  return Launcher(host).Run();
}

// The versions in the order in which they were loaded.
Texts Tried(const StandInHost& host) {
  Texts versions;
  for (const HostCall& call : host.Calls()) {
    if (call.name == "loaded") {
      versions.push_back(call.version);
    }
  }
  return versions;
}

TEST(Discovery, NewestVersionIsTriedFirstAndOlderOnesFollow) {
  RuntimeTree runtime;
  for (const char* version : {"6.0.9", "6.0.36", "6.0.1", "6.0.10", "6.0.0", "6.0.100"}) {
    runtime.AddHost(version, HostVariant::kLacksClose);
  }
  const StandInHost host;

  EXPECT_TRUE(EndedSilently(LaunchOver(runtime, host), 255));
  EXPECT_EQ(Tried(host), (Texts{"6.0.100", "6.0.36", "6.0.10", "6.0.9", "6.0.1", "6.0.0"}));
}

TEST(Discovery, OlderVersionsAreLeftAloneOnceOneRuns) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.5").AddHost("6.0.10").AddHost("6.0.9");
  const StandInHost host;

  EXPECT_TRUE(EndedSilently(LaunchOver(runtime, host), 0));
  EXPECT_EQ(Tried(host), Texts{"6.0.10"});
  EXPECT_EQ(host.VersionThatRan(), "6.0.10");
}

TEST(Discovery, TheVersionTailIsDeliberatelyParsedLikeACConstant) {
  struct Row {
    const char* newer;
    const char* older;
  };
  const Row rows[] = {
      {"6.0.1", "6.0.08"},                    // 08 is not an octal number: 0
      {"6.0.9", "6.0.010"},                   // 010 is 8
      {"6.0.010", "6.0.7"},                   //
      {"6.0.0x10", "6.0.15"},                 // 0x10 is 16
      {"6.0.17", "6.0.0x10"},                 //
      {"6.0.5-preview.3", "6.0.4"},           // 5, the rest does not fit
      {"6.0.6", "6.0.5.99"},                  //
      {"6.0.0", "6.0.-1"},                    // signs count
      {"6.0.+2", "6.0.1"},                    //
      {"6.0. 2", "6.0.1"},                    // and blanks before a number don't
      {"6.0.1", "6.0.rc"},                    // no digits: 0
      {"6.0.1", "6.0."},                      //
      {"6.0.4294967297", "6.0.4294967296"},   // more than 32 bits
      {"6.0.99999999999999999999", "6.0.5"},  // as many as there are
      {"6.0.0", "6.0.-99999999999999999999"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.newer) + " before " + row.older);
    RuntimeTree runtime;
    runtime.AddHost(row.newer, HostVariant::kLacksClose).AddHost(row.older, HostVariant::kLacksClose);
    const StandInHost host;

    EXPECT_TRUE(EndedSilently(LaunchOver(runtime, host), 255));
    EXPECT_EQ(Tried(host), (Texts{row.newer, row.older}));
  }
}

TEST(Discovery, OnlyTheVersionsWithThePrefixAreConsidered) {
  for (const char* version :
       {"7.0.0", "6.1.0", "6.0", "60.0.1", "6-0.1", "v6.0.1", " 6.0.1", "5.0.17", "10.0.0", "6.0-"}) {
    SCOPED_TRACE(version);
    RuntimeTree runtime;
    runtime.AddHost(version);
    const StandInHost host;

    EXPECT_TRUE(EndedSilently(LaunchOver(runtime, host), 255));
    EXPECT_EQ(Tried(host), Texts{});
  }
}

TEST(Discovery, OtherVersionsBesideAFittingOneAreNeverTried) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.5").AddHost("7.0.0").AddHost("8.0.11").AddFolder("backup").AddFile("6.0.9").AddFile("readme");
  const StandInHost host;

  EXPECT_TRUE(EndedSilently(LaunchOver(runtime, host), 0));
  EXPECT_EQ(Tried(host), Texts{"6.0.5"});
}

TEST(Discovery, WithoutARealFxrFolderTheStatusIs255) {
  struct Row {
    const char* name;
    void (*spoil)(const RuntimeTree& runtime);
  };
  const Row rows[] = {
      {"no root", [](const RuntimeTree& runtime) { fs::remove_all(runtime.Root()); }},
      {"no host", [](const RuntimeTree& runtime) { fs::remove_all(runtime.Root() / "host"); }},
      {"no fxr", [](const RuntimeTree& runtime) { fs::remove_all(runtime.FxrFolder()); }},
      {"an empty fxr", [](const RuntimeTree& runtime) { fs::remove_all(runtime.FxrFolder() / "6.0.36"); }},
      {"a file",
       [](const RuntimeTree& runtime) {
         fs::remove_all(runtime.FxrFolder());
         WriteFile(runtime.FxrFolder(), "words");
       }},
      {"a link, deliberately not followed",
       [](const RuntimeTree& runtime) {
         fs::rename(runtime.FxrFolder(), runtime.Root() / "real");
         fs::create_directory_symlink(runtime.Root() / "real", runtime.FxrFolder());
       }},
      {"host is a file",
       [](const RuntimeTree& runtime) {
         fs::remove_all(runtime.Root() / "host");
         WriteFile(runtime.Root() / "host", "words");
       }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    RuntimeTree runtime;
    runtime.AddHost("6.0.36");
    row.spoil(runtime);
    const StandInHost host;

    EXPECT_TRUE(EndedSilently(LaunchOver(runtime, host), 255));
    EXPECT_EQ(Tried(host), Texts{});
  }
}

TEST(Discovery, LinksAboveTheFxrFolderAreFollowed) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.36");
  fs::rename(runtime.Root() / "host", runtime.Root() / "real");
  fs::create_directory_symlink("real", runtime.Root() / "host");
  const StandInHost host;

  EXPECT_TRUE(EndedSilently(LaunchOver(runtime, host), 0));
  EXPECT_EQ(host.VersionThatRan(), "6.0.36");
}

TEST(Discovery, AVersionThatCannotBeUsedIsPassedOver) {
  struct Row {
    const char* name;
    void (*add)(RuntimeTree& runtime);
  };
  const Row rows[] = {
      {"an empty folder", [](RuntimeTree& runtime) { runtime.AddFolder("6.0.9"); }},
      {"a file of that name", [](RuntimeTree& runtime) { runtime.AddFile("6.0.9"); }},
      {"a link to a folder, deliberately not entered",
       [](RuntimeTree& runtime) { runtime.AddLink("6.0.9", runtime.FxrFolder() / "6.0.5"); }},
      {"a link to the library, deliberately refused",
       [](RuntimeTree& runtime) { runtime.AddLink("6.0.9/libhostfxr.so", runtime.HostFile("6.0.5")); }},
      {"a link to nowhere", [](RuntimeTree& runtime) { runtime.AddLink("6.0.9/libhostfxr.so", "nowhere"); }},
      {"a folder in the library's place", [](RuntimeTree& runtime) { runtime.AddFolder("6.0.9/libhostfxr.so"); }},
      {"another letter case", [](RuntimeTree& runtime) { runtime.AddFile("6.0.9/LibHostFxr.so", "x"); }},
      {"an empty library", [](RuntimeTree& runtime) { runtime.AddHostOfBytes("6.0.9", ""); }},
      {"a text", [](RuntimeTree& runtime) { runtime.AddHostOfBytes("6.0.9", "no library at all\n"); }},
      {"a linker script", [](RuntimeTree& runtime) { runtime.AddHostOfBytes("6.0.9", "INPUT(libother.so)\n"); }},
      {"an executable", [](RuntimeTree& runtime) { runtime.AddHostOfBytes("6.0.9", ReadFile(LauncherFile())); }},
      {"no function to initialise",
       [](RuntimeTree& runtime) { runtime.AddHost("6.0.9", HostVariant::kLacksInitialize); }},
      {"no function to run", [](RuntimeTree& runtime) { runtime.AddHost("6.0.9", HostVariant::kLacksRun); }},
      {"no function to close", [](RuntimeTree& runtime) { runtime.AddHost("6.0.9", HostVariant::kLacksClose); }},
      {"a function that is null", [](RuntimeTree& runtime) { runtime.AddHost("6.0.9", HostVariant::kNullRun); }},
      {"a symbol that nobody has", [](RuntimeTree& runtime) { runtime.AddHost("6.0.9", HostVariant::kUnresolved); }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    RuntimeTree runtime;
    runtime.AddHost("6.0.5");
    row.add(runtime);
    StandInHost host;

    EXPECT_TRUE(EndedSilently(LaunchOver(runtime, host), 0));
    EXPECT_EQ(host.VersionThatRan(), "6.0.5");

    fs::remove_all(runtime.FxrFolder() / "6.0.5");
    host.Forget();
    EXPECT_TRUE(EndedSilently(LaunchOver(runtime, host), 255)) << "with nothing to fall back to";
    EXPECT_EQ(host.VersionThatRan(), "");
  }
}

TEST(Discovery, WhatCannotBeReadIsPassedOver) {
  for (const char* unreadable : {"6.0.9", "6.0.9/libhostfxr.so"}) {
    SCOPED_TRACE(unreadable);
    RuntimeTree runtime;
    runtime.AddHost("6.0.5").AddHost("6.0.9");
    fs::permissions(runtime.FxrFolder() / unreadable, fs::perms::none);
    const auto settings = SettingsFile::ForRoot(runtime.Root());
    const StandInHost host;

    EXPECT_TRUE(EndedSilently(Launcher(host).WithoutReadingEverything().Run(), 0));
    EXPECT_EQ(host.VersionThatRan(), "6.0.5");
  }
}

TEST(Discovery, AnUnreadableFxrFolderEndsWith255) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.5");
  fs::permissions(runtime.FxrFolder(), fs::perms::none);
  const auto settings = SettingsFile::ForRoot(runtime.Root());
  const StandInHost host;

  EXPECT_TRUE(EndedSilently(Launcher(host).WithoutReadingEverything().Run(), 255));
  fs::permissions(runtime.FxrFolder(), fs::perms::owner_all);
}

TEST(Discovery, ARelativeRootIsWalkedButNothingIsLoadedFromIt) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.5");
  const SettingsFile settings("DotnetRootFolder=" + runtime.Root().filename().string() + "\n");
  const StandInHost host;

  EXPECT_TRUE(EndedSilently(Launcher(host).Folder(runtime.Root().parent_path()).Run(), 255));
  EXPECT_EQ(Tried(host), Texts{});
}

TEST(Discovery, ANestedFolderStandsForTheVersionOfItsNameDirectlyUnderFxr) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.7", HostVariant::kLacksClose).AddHost("6.0.5");
  runtime.AddFolder("other/6.0.7");
  const StandInHost host;

  EXPECT_TRUE(EndedSilently(LaunchOver(runtime, host), 0));
  EXPECT_EQ(Tried(host), (Texts{"6.0.7", "6.0.7", "6.0.5"}));
}

TEST(Discovery, ANestedFolderMakesALinkedVersionACandidate) {
  RuntimeTree runtime;
  runtime.AddHost("real/6.0.7").AddLink("6.0.7", "real/6.0.7");
  const StandInHost host;

  EXPECT_TRUE(EndedSilently(LaunchOver(runtime, host), 0));
  EXPECT_EQ(host.Call("loaded").fields.at("file"), runtime.HostFile("6.0.7"));
}

TEST(Discovery, ANestedLibraryAloneIsNoCandidate) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.5/6.0.7");
  const StandInHost host;

  EXPECT_TRUE(EndedSilently(LaunchOver(runtime, host), 255));
  EXPECT_EQ(Tried(host), Texts{});
}

TEST(Discovery, AFolderWithASubfolderAmongItsEntriesIsDeliberatelyTriedTwice) {
  RuntimeTree runtime("/var/opt/morvath");
  runtime.AddFile("6.0.5/before").AddHost("6.0.5", HostVariant::kLacksClose).AddFolder("6.0.5/sub");
  runtime.AddFile("6.0.5/after");
  Texts entries;
  for (const auto& entry : fs::directory_iterator(runtime.FxrFolder() / "6.0.5")) {
    entries.push_back(entry.path().filename());
  }
  ASSERT_NE(entries.front(), "sub") << "this file system lists in an order that shows nothing";
  ASSERT_NE(entries.back(), "sub") << "this file system lists in an order that shows nothing";
  const StandInHost host;

  EXPECT_TRUE(EndedSilently(LaunchOver(runtime, host), 255));
  EXPECT_EQ(Tried(host), (Texts{"6.0.5", "6.0.5"}));
}

TEST(Discovery, AFolderWhoseNameIsNotUtf8IsPassedOver) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.5").AddHost("6.0.9\xff");
  const StandInHost host;

  EXPECT_TRUE(EndedSilently(LaunchOver(runtime, host), 0));
  EXPECT_EQ(host.VersionThatRan(), "6.0.5");
}

}  // namespace
}  // namespace tests
