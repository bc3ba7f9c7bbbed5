#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "foundation/directory_enumerator.h"
#include "foundation/file_find.h"
#include "tests/foundation/open_files.h"
#include "tests/foundation/system_calls.h"
#include "tests/support/temp_folder.h"

namespace tov::filesystem {
namespace {

namespace fs = std::filesystem;
using tests::CountedCalls;
using tests::FailingCall;
using tests::OpenFiles;
using tests::SystemCall;
using tests::TempFolder;
using Walk = DirectoryEnumerator<NoFollowSymLinksResolvingStrategy, posix::filesystem::FileFind>;

std::size_t Entries(Walk& walk) {
  std::size_t entries = 0;
  for (; !walk.IsFinished(); walk.Next()) {
    ++entries;
  }
  return entries;
}

TEST(DirectoryEnumeratorSystem, AReadErrorEndsTheWalkWithNothingOpen) {
  const TempFolder folder;
  fs::create_directories(folder / "a/b/c");
  const std::size_t before = OpenFiles();
  Walk walk;
  ASSERT_EQ(walk.Open(folder.Path().u16string(), {}), 0);
  while (!walk.CurrentFolder().ends_with("/b") && !walk.CurrentFolder().ends_with("/c")) {
    walk.Next();
  }

  const FailingCall fault(SystemCall::kReaddir, 0, EIO);
  walk.Next();

  EXPECT_TRUE(fault.HasFailed());
  EXPECT_TRUE(walk.IsFinished());
  EXPECT_EQ(OpenFiles(), before);
}

TEST(DirectoryEnumeratorSystem, ASubfolderWhoseFirstReadFailsIsListedAndTheWalkContinues) {
  const TempFolder folder;
  tests::WriteFile(folder / "below/file", "");
  Walk walk;
  ASSERT_EQ(walk.Open(folder.Path().u16string(), {}), 0);
  Walk other;
  const FailingCall fault(SystemCall::kFdopendir, 1, EIO);

  ASSERT_EQ(other.Open(folder.Path().u16string(), {}), 0);
  const std::size_t entries = Entries(other);

  EXPECT_TRUE(fault.HasFailed());
  EXPECT_EQ(entries, 3U);        // The two dots and "below" itself.
  EXPECT_EQ(Entries(walk), 5U);  // The two dots twice and "file".
}

// Its status was read, and it is gone when it is opened.
TEST(DirectoryEnumeratorSystem, ASubfolderThatVanishesBeforeItIsOpenedIsListedAndTheWalkContinues) {
  const TempFolder folder;
  tests::WriteFile(folder / "below/file", "");
  const FailingCall fault(SystemCall::kOpenat, 1, ENOENT);
  Walk walk;

  ASSERT_EQ(walk.Open(folder.Path().u16string(), {}), 0);

  EXPECT_EQ(Entries(walk), 3U);  // The two dots and "below" itself.
  EXPECT_TRUE(fault.HasFailed());
}

TEST(DirectoryEnumeratorSystem, OnlyFoldersAreOpened) {
  const TempFolder folder;
  ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0600), 0);
  tests::WriteFile(folder / "file", "");
  fs::create_directory_symlink("/", folder / "link");
  const CountedCalls calls(SystemCall::kOpenat);
  Walk walk;

  ASSERT_EQ(walk.Open(folder.Path().u16string(), {}), 0);
  EXPECT_EQ(Entries(walk), 5U);

  EXPECT_EQ(calls.Paths(), std::vector<std::string>{folder.Path()});
}

TEST(DirectoryEnumeratorSystem, TheTargetOfEachLinkIsLookedAtOnceAndChangesNothing) {
  const TempFolder folder;
  fs::create_directory(folder / "real");
  fs::create_directory_symlink("real", folder / "link");
  tests::WriteFile(folder / "file", "");
  const CountedCalls calls(SystemCall::kStat);
  Walk walk;

  ASSERT_EQ(walk.Open(folder.Path().u16string(), {}), 0);
  Entries(walk);

  EXPECT_EQ(calls.Paths(), std::vector<std::string>{folder / "link"});
}

}  // namespace
}  // namespace tov::filesystem
