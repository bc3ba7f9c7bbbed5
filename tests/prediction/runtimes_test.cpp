// Runtime trees of every kind: does a launch end as the doctor says, with the version that it says?
#include <gtest/gtest.h>

#include <string>

#include "tests/prediction/known_world.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

using enum HostVariant;

// Puts a good old version under a newer one that is about to be spoilt.
RuntimeTree& WithFallback(KnownWorld& world) {
  return world.runtime.AddHost("6.0.5");
}

void Unreadable(KnownWorld& world, const char* name) {
  WithFallback(world).AddHost("6.0.9");
  fs::permissions(world.runtime.FxrFolder() / name, fs::perms::none);
  world.start.reads_everything = false;
}

TEST(PredictedRuntimes, TheNewestIsTakenInTheLaunchersOrder) {
  struct Row {
    const char* newer;
    const char* older;
  };
  const Row rows[] = {
      {"6.0.10", "6.0.9"},
      {"6.0.1", "6.0.08"},
      {"6.0.9", "6.0.010"},
      {"6.0.010", "6.0.7"},
      {"6.0.0x10", "6.0.15"},
      {"6.0.17", "6.0.0x10"},
      {"6.0.5-preview.3", "6.0.4"},
      {"6.0.6", "6.0.5.99"},
      {"6.0.0", "6.0.-1"},
      {"6.0.+2", "6.0.1"},
      {"6.0. 2", "6.0.1"},
      {"6.0.1", "6.0.rc"},
      {"6.0.1", "6.0."},
      {"6.0.4294967297", "6.0.4294967296"},
      {"6.0.99999999999999999999", "6.0.5"},
      {"6.0.0", "6.0.-99999999999999999999"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.newer) + " before " + row.older);
    KnownWorld world;
    world.runtime.AddHost(row.newer).AddHost(row.older);

    const Comparison comparison = Compare(world.host, world.start);

    EXPECT_EQ(comparison.difference, "");
    EXPECT_EQ(comparison.decisive, row.newer);
  }
}

TEST(PredictedRuntimes, OnlyTheVersionsWithThePrefixCount) {
  for (const char* version :
       {"7.0.0", "6.1.0", "6.0", "60.0.1", "6-0.1", "v6.0.1", " 6.0.1", "5.0.17", "10.0.0", "6.0-"}) {
    SCOPED_TRACE(version);
    KnownWorld world;
    world.runtime.AddHost(version);

    const Comparison comparison = Compare(world.host, world.start);

    EXPECT_EQ(comparison.difference, "");
    EXPECT_EQ(comparison.outcome, "status-255");
  }
}

TEST(PredictedRuntimes, WithoutARealFxrFolderTheStatusIs255) {
  const KnownCase cases[] = {
      {"no root", [](KnownWorld& world) { fs::remove_all(world.runtime.Root()); }, "status-255"},
      {"no host", [](KnownWorld& world) { fs::remove_all(world.runtime.Root() / "host"); }, "status-255"},
      {"no fxr", [](KnownWorld& world) { fs::remove_all(world.runtime.FxrFolder()); }, "status-255"},
      {"an empty fxr", [](KnownWorld&) {}, "status-255"},
      {"a file",
       [](KnownWorld& world) {
         fs::remove_all(world.runtime.FxrFolder());
         WriteFile(world.runtime.FxrFolder(), "words");
       },
       "status-255"},
      {"a link",
       [](KnownWorld& world) {
         WithFallback(world);
         fs::rename(world.runtime.FxrFolder(), world.runtime.Root() / "real");
         fs::create_directory_symlink(world.runtime.Root() / "real", world.runtime.FxrFolder());
       },
       "status-255"},
      {"host is a file",
       [](KnownWorld& world) {
         fs::remove_all(world.runtime.Root() / "host");
         WriteFile(world.runtime.Root() / "host", "words");
       },
       "status-255"},
      {"the root is a file",
       [](KnownWorld& world) { world.settings.Write("DotnetRootFolder=" + world.start.launcher.string()); },
       "status-255"},
      {"the root is the fxr folder itself",
       [](KnownWorld& world) {
         WithFallback(world);
         world.settings.Write("DotnetRootFolder=" + world.runtime.FxrFolder().string());
       },
       "status-255"},
      {"a folder that cannot be entered",
       [](KnownWorld& world) {
         WithFallback(world);
         fs::permissions(world.runtime.FxrFolder(), fs::perms::none);
         world.start.reads_everything = false;
       },
       "status-255"},
  };
  for (const KnownCase& known : cases) {
    Check(known);
  }
}

TEST(PredictedRuntimes, AVersionThatCannotBeUsedIsPassedOver) {
  const KnownCase cases[] = {
      {"an empty folder", [](KnownWorld& world) { WithFallback(world).AddFolder("6.0.9"); }, "runs", "6.0.5"},
      {"a file of that name", [](KnownWorld& world) { WithFallback(world).AddFile("6.0.9"); }, "runs", "6.0.5"},
      {"a link to a folder",
       [](KnownWorld& world) { WithFallback(world).AddLink("6.0.9", world.runtime.FxrFolder() / "6.0.5"); }, "runs",
       "6.0.5"},
      {"a link to the library",
       [](KnownWorld& world) { WithFallback(world).AddLink("6.0.9/libhostfxr.so", world.runtime.HostFile("6.0.5")); },
       "runs", "6.0.5"},
      {"a link to nowhere", [](KnownWorld& world) { WithFallback(world).AddLink("6.0.9/libhostfxr.so", "nowhere"); },
       "runs", "6.0.5"},
      {"a folder in the library's place",
       [](KnownWorld& world) { WithFallback(world).AddFolder("6.0.9/libhostfxr.so"); }, "runs", "6.0.5"},
      {"another letter case", [](KnownWorld& world) { WithFallback(world).AddFile("6.0.9/LibHostFxr.so", "x"); },
       "runs", "6.0.5"},
      {"an empty library", [](KnownWorld& world) { WithFallback(world).AddHostOfBytes("6.0.9", ""); }, "runs", "6.0.5"},
      {"a text", [](KnownWorld& world) { WithFallback(world).AddHostOfBytes("6.0.9", "no library at all\n"); }, "runs",
       "6.0.5"},
      {"a linker script",
       [](KnownWorld& world) { WithFallback(world).AddHostOfBytes("6.0.9", "INPUT(libother.so)\n"); }, "runs", "6.0.5"},
      {"an executable",
       [](KnownWorld& world) { WithFallback(world).AddHostOfBytes("6.0.9", ReadFile(LauncherFile())); }, "runs",
       "6.0.5"},
      {"no function to initialise", [](KnownWorld& world) { WithFallback(world).AddHost("6.0.9", kLacksInitialize); },
       "runs", "6.0.5"},
      {"no function to run", [](KnownWorld& world) { WithFallback(world).AddHost("6.0.9", kLacksRun); }, "runs",
       "6.0.5"},
      {"no function to close", [](KnownWorld& world) { WithFallback(world).AddHost("6.0.9", kLacksClose); }, "runs",
       "6.0.5"},
      {"a function that is null", [](KnownWorld& world) { WithFallback(world).AddHost("6.0.9", kNullRun); }, "runs",
       "6.0.5"},
      {"a symbol that nobody has", [](KnownWorld& world) { WithFallback(world).AddHost("6.0.9", kUnresolved); }, "runs",
       "6.0.5"},
      {"an unreadable folder", [](KnownWorld& world) { Unreadable(world, "6.0.9"); }, "runs", "6.0.5"},
      {"an unreadable library", [](KnownWorld& world) { Unreadable(world, "6.0.9/libhostfxr.so"); }, "runs", "6.0.5"},
      {"a name that is not UTF-8", [](KnownWorld& world) { WithFallback(world).AddHost("6.0.9\xff"); }, "runs",
       "6.0.5"},
      {"other runtimes",
       [](KnownWorld& world) { WithFallback(world).AddHost("7.0.0").AddHost("8.0.11").AddFile("readme"); }, "runs",
       "6.0.5"},
  };
  for (const KnownCase& known : cases) {
    Check(known);

    SCOPED_TRACE("with nothing to fall back to");
    KnownWorld world;
    known.lay_out(world);
    fs::remove_all(world.runtime.FxrFolder() / "6.0.5");
    SCOPED_TRACE(known.name);
    const Comparison comparison = Compare(world.host, world.start);
    EXPECT_EQ(comparison.difference, "");
    EXPECT_EQ(comparison.outcome, "status-255");
  }
}

TEST(PredictedRuntimes, NestedFoldersAndLinksCountAsTheyDoForTheLauncher) {
  const KnownCase cases[] = {
      {"host is a link",
       [](KnownWorld& world) {
         WithFallback(world);
         fs::rename(world.runtime.Root() / "host", world.runtime.Root() / "real");
         fs::create_directory_symlink("real", world.runtime.Root() / "host");
       },
       "runs", "6.0.5"},
      {"a relative root",
       [](KnownWorld& world) {
         WithFallback(world);
         world.settings.Write("DotnetRootFolder=" + world.runtime.Root().filename().string() + "\n");
         world.start.folder = world.runtime.Root().parent_path();
       },
       "status-255"},
      {"a nested folder stands for a version directly under fxr",
       [](KnownWorld& world) { WithFallback(world).AddHost("6.0.7", kLacksClose).AddFolder("other/6.0.7"); }, "runs",
       "6.0.5"},
      {"a nested folder makes a linked version a candidate",
       [](KnownWorld& world) { world.runtime.AddHost("real/6.0.7").AddLink("6.0.7", "real/6.0.7"); }, "runs", "6.0.7"},
      {"a nested library alone is no candidate", [](KnownWorld& world) { world.runtime.AddHost("6.0.5/6.0.7"); },
       "status-255"},
      {"a folder that is met twice",
       [](KnownWorld& world) {
         world.runtime.AddFile("6.0.5/before").AddHost("6.0.5", kLacksClose).AddFolder("6.0.5/sub");
         world.runtime.AddFile("6.0.5/after");
       },
       "status-255"},
      // A lone surrogate matters once there is something to compare it with. JSON shows three bytes that are not UTF-8.
      {"a version with a lone surrogate", [](KnownWorld& world) { world.runtime.AddHost("6.0.\xed\xa0\x80"); }, "runs",
       "6.0.\uFFFD\uFFFD\uFFFD"},
      {"a version with a lone surrogate and another",
       [](KnownWorld& world) { WithFallback(world).AddHost("6.0.\xed\xa0\x80"); }, "aborts"},
  };
  for (const KnownCase& known : cases) {
    Check(known);
  }
}

}  // namespace
}  // namespace tests
