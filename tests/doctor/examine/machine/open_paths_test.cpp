#include "doctor/examine/machine/open_paths.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "doctor/judge/words/names.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

// A file in folders of a test's own.
struct World {
  World() {
    tests::WriteFile(file, "");
    tests::WriteFile(file + "2", "");
    for (const fs::path& path : {fs::path(file), fs::path(file + "2"), fs::path(tree), folder.Path()}) {
      ::chmod(path.c_str(), 0755);
    }
  }

  // "path right", relative to the folder, in order; what is above the folder is this machine's affair.
  std::string Open() const {
    std::string open;
    for (const OpenPath& path : PathsOpenToOthers({{}, {tree}, {tree}})) {
      const fs::path relative = fs::path(path.path).lexically_relative(fs::canonical(folder.Path()));
      if (*relative.begin() != "..") {
        open.append(open.empty() ? "" : ", ").append(relative).append(" ");
        open.append(RowOf(kChangeRights, path.right).code).append(path.is_inside ? " inside" : "");
      }
    }
    return open;
  }

  tests::TempFolder folder;
  std::string tree = fs::canonical(folder.Path()) / "tree";
  std::string file = tree + "/file";
};

TEST(OpenPaths, AreNoneOfWhatIsOwnOrRoots) {
  EXPECT_EQ(World().Open(), "");
}

TEST(OpenPaths, HoldWhatEverybodyMayWriteAndTheFoldersOnTheWay) {
  const World world;
  ::chmod(world.folder.Path().c_str(), 0757);
  ::chmod(world.file.c_str(), 0646);

  EXPECT_EQ(world.Open(), ". everybody, tree/file everybody inside");
}

TEST(OpenPaths, LackAFolderInWhichNobodyMayReplaceWhatIsAnothers) {
  const World world;
  ::chmod(world.folder.Path().c_str(), 01777);

  EXPECT_EQ(world.Open(), "");
}

TEST(OpenPaths, HoldWhatBelongsToAnotherUserAndWhatAGroupMayWrite) {
  const World world;
  if (::chown(world.file.c_str(), 54321, 54322) != 0) {
    GTEST_SKIP() << "it takes root to give a file away";
  }
  ASSERT_EQ(::chown((world.file + "2").c_str(), 0, 54322), 0);
  ::chmod((world.file + "2").c_str(), 0775);

  const auto open = PathsOpenToOthers({{world.file}, {}, {}});

  EXPECT_EQ(world.Open(), "tree/file owner inside, tree/file2 group inside");
  ASSERT_FALSE(open.empty());
  EXPECT_EQ(open.back().who, "54321");
}

TEST(OpenPaths, HoldTheFoldersThatALinkLeadsThrough) {
  const World world;
  const World other;
  fs::create_directory_symlink(other.tree, world.tree + "/link");
  ::chmod(other.tree.c_str(), 0777);

  const auto open = PathsOpenToOthers({{world.tree + "/link/file"}, {}, {}});

  EXPECT_NE(std::ranges::find(open, other.tree, &OpenPath::path), open.end());
}

TEST(OpenPaths, LackWhatIsNotThere) {
  EXPECT_TRUE(PathsOpenToOthers({{"/nothing/there"}, {"/nothing/here"}, {}}).empty());
  EXPECT_TRUE(PathsOpenToOthers({{""}, {""}, {""}}).empty());
}

}  // namespace
}  // namespace doctor
