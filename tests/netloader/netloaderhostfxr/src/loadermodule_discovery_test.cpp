// Finding and trying the installed hosts, line by line.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <typeinfo>
#include <vector>

#include "netloader/netloaderhostfxr/src/loadermodule.h"
#include "tests/netloader/netloaderhostfxr/src/interposed_calls.h"
#include "tests/netloader/netloaderhostfxr/src/loader_world.h"
#include "tests/support/without_reading_everything.h"

namespace netloader {
namespace {

namespace fs = std::filesystem;
using tests::HostVariant;
using tests::Lines;
using tests::LoaderWorld;
using tests::operator+;

std::string InvalidFolderLine(const std::string& fxr) {
  return "ERROR\tLoaderModule: Loading dotnet failed. Invalid path to dotnet fxr folder: '" + fxr + "'";
}

// Runs the search and returns what it logged after the loader's first line.
Lines LinesOfSearch(LoaderWorld& world, bool found) {
  LoaderModule loader(world.Parameters());
  EXPECT_EQ(loader.LoadDotNetWithHigerVersion(), found);
  Lines lines = world.log.Lines();
  EXPECT_EQ(lines.front(), world.CreatedLine());
  lines.erase(lines.begin());
  return lines;
}

TEST(LoaderDiscovery, TheNewestVersionIsTriedFirstAndTheOthersAreOnlyLookedAt) {
  LoaderWorld world;
  world.runtime.AddHost("6.0.5").AddHost("6.0.10");

  const Lines lines = LinesOfSearch(world, true);

  Lines expected;
  for (const std::string& version : world.Listed()) {
    expected = expected + world.FoundLines(version, true);
  }
  EXPECT_EQ(lines, (expected + Lines{world.AttemptLine("6.0.10")} + LoaderWorld::LoadedLines(world.File("6.0.10")) +
                    Lines{world.SuccessLine("6.0.10")}));
  EXPECT_EQ(world.host.Story(), (Lines{"6.0.10 loaded", "6.0.10 unloaded"}));
}

TEST(LoaderDiscovery, AVersionWithAnotherPrefixIsSkippedAndNeverTried) {
  LoaderWorld world;
  world.runtime.AddHost("7.0.0");

  EXPECT_EQ(LinesOfSearch(world, false), (world.FoundLines("7.0.0", false) + Lines{LoaderWorld::NothingLoadedLine()}));
  EXPECT_TRUE(world.host.Story().empty());
}

TEST(LoaderDiscovery, AVersionWithoutALibraryIsSkipped) {
  LoaderWorld world;
  world.runtime.AddFolder("6.0.1");

  EXPECT_EQ(LinesOfSearch(world, false), (world.FoundLines("6.0.1", false) + Lines{LoaderWorld::NothingLoadedLine()}));
}

TEST(LoaderDiscovery, AVersionWhoseLibraryIsALinkIsSkippedOnPurpose) {
  LoaderWorld world;
  world.runtime.AddLink("6.0.1/libhostfxr.so", tests::HostLibrary());

  EXPECT_EQ(LinesOfSearch(world, false), (world.FoundLines("6.0.1", false) + Lines{LoaderWorld::NothingLoadedLine()}));
}

TEST(LoaderDiscovery, AnEmptyFxrFolderHasOnlyTheLineThatNothingWasLoaded) {
  LoaderWorld world;

  EXPECT_EQ(LinesOfSearch(world, false), (Lines{LoaderWorld::NothingLoadedLine()}));
}

TEST(LoaderDiscovery, ANestedVersionIsTriedDirectlyUnderTheFxrFolder) {
  LoaderWorld world;
  world.runtime.AddFolder("backup/6.0.7").AddHost("6.0.7");

  const Lines lines = LinesOfSearch(world, true);

  // The nested folder and the other one look the same.
  EXPECT_GE(std::ranges::count(lines, world.FoundLines("6.0.7", true).front()), 2);
  EXPECT_GE(std::ranges::count(lines, world.FoundLines("6.0.7", true).back()), 2);
  EXPECT_EQ(lines.back(), world.SuccessLine("6.0.7"));
}

TEST(LoaderDiscovery, ANestedVersionAloneIsSkippedForWantOfALibraryDirectlyUnderTheFxrFolder) {
  LoaderWorld world;
  world.runtime.AddHost("6.0.5/6.0.7");

  const Lines lines = LinesOfSearch(world, false);

  // The outer folder may be met before the nested one, after it, or both.
  EXPECT_EQ(std::set(lines.begin(), lines.end() - 1), [&] {
    const Lines expected = world.FoundLines("6.0.5", false) + world.FoundLines("6.0.7", false);
    return std::set(expected.begin(), expected.end());
  }());
  EXPECT_EQ(lines.back(), LoaderWorld::NothingLoadedLine());
}

TEST(LoaderDiscovery, AVersionThatIsThereTwiceIsTriedTwiceOnPurpose) {
  LoaderWorld world;
  world.runtime.AddHostOfBytes("6.0.5", "text");
  for (int i = 0; i < 20; ++i) {
    world.runtime.AddFile("6.0.5/file" + std::to_string(i)).AddFolder("6.0.5/folder" + std::to_string(i));
  }

  const Lines lines = LinesOfSearch(world, false);

  const auto found = std::ranges::count(lines, world.FoundLines("6.0.5", true).back());
  EXPECT_GE(found, 2);
  EXPECT_EQ(std::ranges::count(lines, world.AttemptLine("6.0.5")), found);
  EXPECT_EQ(std::ranges::count(lines, world.FailedLine("6.0.5")), found);
}

TEST(LoaderDiscovery, AFolderWhoseNameIsNotUtf8IsLoggedAsNoDirectory) {
  LoaderWorld world;
  for (int i = 0; i < 20; ++i) {
    world.runtime.AddFile("6.0.5/file" + std::to_string(i)).AddFolder("6.0.5/\xff" + std::to_string(i));
  }

  const Lines lines = LinesOfSearch(world, false);

  EXPECT_GE(std::ranges::count(lines,
                               "TRACE\tLoaderModule: Loading dotnet skipped processing fxr path: ''. Not a directory."),
            1);
  EXPECT_EQ(lines.back(), LoaderWorld::NothingLoadedLine());
}

TEST(LoaderDiscovery, ABrokenNewestVersionHasOneFailedLineAndTheOlderOneIsLoaded) {
  LoaderWorld world;
  world.runtime.AddHost("6.0.9").AddHostOfBytes("6.0.10", "text");

  const Lines lines = LinesOfSearch(world, true);

  const Lines tried(lines.begin() + 4, lines.end());
  EXPECT_EQ(tried, (Lines{world.AttemptLine("6.0.10")} + LoaderWorld::NotOpenedLines(world.File("6.0.10")) +
                    Lines{world.FailedLine("6.0.10"), world.AttemptLine("6.0.9")} +
                    LoaderWorld::LoadedLines(world.File("6.0.9")) + Lines{world.SuccessLine("6.0.9")}));
}

TEST(LoaderDiscovery, AVersionThatLacksAFunctionIsClosedBeforeTheOlderOneIsOpened) {
  LoaderWorld world;
  world.runtime.AddHost("6.0.9").AddHost("6.0.10", HostVariant::kLacksClose);

  const Lines lines = LinesOfSearch(world, true);

  EXPECT_EQ(std::ranges::count(lines, world.FailedLine("6.0.10")), 1);
  EXPECT_EQ(lines.back(), world.SuccessLine("6.0.9"));
  EXPECT_EQ(world.host.Story(), (Lines{"6.0.10 loaded", "6.0.10 unloaded", "6.0.9 loaded", "6.0.9 unloaded"}));
}

TEST(LoaderDiscovery, WhenNoVersionLoadsEachHasItsFailedLineAndTheSearchHasOne) {
  LoaderWorld world;
  world.runtime.AddHostOfBytes("6.0.1", "text").AddHostOfBytes("6.0.2", "");

  const Lines lines = LinesOfSearch(world, false);

  const Lines tried(lines.begin() + 4, lines.end());
  EXPECT_EQ(tried, (Lines{world.AttemptLine("6.0.2")} + LoaderWorld::NotOpenedLines(world.File("6.0.2")) +
                    Lines{world.FailedLine("6.0.2"), world.AttemptLine("6.0.1")} +
                    LoaderWorld::NotOpenedLines(world.File("6.0.1")) +
                    Lines{world.FailedLine("6.0.1"), LoaderWorld::NothingLoadedLine()}));
}

TEST(LoaderDiscovery, EachLineIsWrittenWhenItsStepIsTaken) {
  LoaderWorld world;
  world.runtime.AddHost("6.0.1").AddHost("6.0.2").AddHost("6.0.3");
  LoaderModule loader(world.Parameters());
  Lines seen;  // The last line that was there each time a file was looked at.
  {
    const tests::WatchedStatus watched([&](const std::string&) { seen.push_back(world.log.Lines().back()); });
    ASSERT_TRUE(loader.LoadDotNetWithHigerVersion());
  }

  for (const std::string& version : world.Listed()) {
    const Lines lines = world.FoundLines(version, true);
    EXPECT_GE(std::ranges::count(seen, lines.front()), 1) << "its library is looked at after " << lines.front();
    EXPECT_GE(std::ranges::count(seen, lines.back()), 1) << "the walk goes on after " << lines.back();
  }
}

TEST(LoaderDiscovery, AFileOrALinkInPlaceOfTheFxrFolderIsAnInvalidPath) {
  LoaderWorld world;
  const std::string fxr = world.runtime.FxrFolder();
  fs::remove(fxr);
  EXPECT_EQ(LinesOfSearch(world, false), (Lines{InvalidFolderLine(fxr)}));

  tests::WriteFile(fxr, "text");
  EXPECT_EQ(LinesOfSearch(world, false).back(), InvalidFolderLine(fxr));

  fs::remove(fxr);
  fs::create_directory_symlink("/", fxr);
  EXPECT_EQ(LinesOfSearch(world, false).back(), InvalidFolderLine(fxr));
}

TEST(LoaderDiscovery, AnFxrFolderWhosePathDoesNotConvertIsAnInvalidPath) {
  const tests::CapturedLog log;
  const std::string root = "/" + std::string(5000, 'r');
  LoaderModule loader({tov::WideString(root.begin(), root.end()), u"6.0.", u"/product", {}});
  const tests::FailingAllocation fault(root.size() + std::string("/host/fxr").size() + 1);

  EXPECT_FALSE(loader.LoadDotNetWithHigerVersion());

  EXPECT_EQ(log.Lines(), (Lines{LoaderWorld::CreatedLine(root), InvalidFolderLine(root + "/host/fxr")}));
}

TEST(LoaderDiscovery, AnFxrFolderThatCannotBeOpenedHasALineOfItsOwnWithoutQuotes) {
  LoaderWorld world;
  fs::permissions(world.runtime.FxrFolder(), fs::perms::none);

  const Lines lines = [&] {
    const tests::WithoutReadingEverything ordinary;
    return LinesOfSearch(world, false);
  }();

  fs::permissions(world.runtime.FxrFolder(), fs::perms::owner_all);
  EXPECT_EQ(lines, (Lines{"ERROR\tLoaderModule: Could not find hostfxr version from path " +
                          world.runtime.FxrFolder().string() + ". Initialization has been failed."}));
}

TEST(LoaderDiscovery, UnderARelativeRootVersionsAreFoundAndNoneIsLoaded) {
  LoaderWorld world;
  world.runtime.AddHost("6.0.1");
  const fs::path root = fs::relative(world.runtime.Root());
  const std::string file = root / "host/fxr/6.0.1/libhostfxr.so";
  LoaderModule loader({root.u16string(), u"6.0.", u"/product", {}});

  EXPECT_FALSE(loader.LoadDotNetWithHigerVersion());

  EXPECT_EQ(world.log.Lines(),
            (Lines{LoaderWorld::CreatedLine(root),
                   "TRACE\tLoaderModule: Loading dotnet processing version file: '" + file + "', version: '6.0.1'",
                   "TRACE\tLoaderModule: Version candidate is ok: '6.0.1'",
                   "TRACE\tLoaderModule: Attempt to load fxr file: '" + file + "', version: '6.0.1'",
                   "ERROR\tLoaderModule: Loading from relative path is prohibited path: '" + file + "'",
                   "ERROR\tLoaderModule: Failed to load fxr: '" + file + "'", LoaderWorld::NothingLoadedLine()}));
}

// Folder names that are encoded surrogates count as text until their number is asked for.
TEST(LoaderDiscovery, OfSeveralVersionsOneWhoseTailIsNotWellFormedThrows) {
  LoaderWorld world;
  world.runtime.AddHost("6.0.1").AddHost("6.0.\xed\xa0\x80");
  LoaderModule loader(world.Parameters());

  EXPECT_THROW(loader.LoadDotNetWithHigerVersion(), std::bad_cast);
}

TEST(LoaderDiscovery, AllFoldersAreClosedAfterwards) {
  LoaderWorld world;
  world.runtime.AddHostOfBytes("6.0.1", "text").AddFolder("6.0.2/a/b").AddFolder("7.0.0");
  LoaderModule loader(world.Parameters());
  const auto descriptors = [] {
    const fs::directory_iterator entries("/proc/self/fd");
    return std::distance(begin(entries), end(entries));
  };
  const auto before = descriptors();

  static_cast<void>(loader.LoadDotNetWithHigerVersion());

  EXPECT_EQ(descriptors(), before);
}

}  // namespace
}  // namespace netloader
