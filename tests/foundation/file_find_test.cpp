#include "foundation/file_find.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <set>
#include <string>

#include "tests/foundation/open_files.h"
#include "tests/support/temp_folder.h"
#include "tests/support/without_reading_everything.h"

namespace tov::posix::filesystem {
namespace {

namespace fs = std::filesystem;
using tests::OpenFiles;
using tests::TempFolder;
using tests::WriteFile;

int Code(std::uint32_t bits) {
  return static_cast<int>(bits);
}

std::multiset<std::string> Rest(FileFind& find) {
  std::multiset<std::string> names;
  while (find.HasEntry()) {
    names.emplace(find.EntryName());
    EXPECT_EQ(find.Next(), 0);
  }
  return names;
}

TEST(FileFind, ReadsEveryEntryOnceWithTheDots) {
  const TempFolder folder;
  WriteFile(folder / "file", "");
  fs::create_directory(folder / "folder");
  fs::create_symlink("nowhere", folder / "link");
  FileFind find;

  ASSERT_EQ(find.Open(folder.Path()), 0);

  EXPECT_EQ(Rest(find), (std::multiset<std::string>{".", "..", "file", "folder", "link"}));
  EXPECT_FALSE(find.HasEntry());
}

TEST(FileFind, AFreshOneHasNoEntry) {
  EXPECT_FALSE(FileFind().HasEntry());
}

TEST(FileFind, AnEmptyPathIsTheCurrentFolder) {
  FileFind here;
  FileFind dot;

  ASSERT_EQ(here.Open(""), 0);
  ASSERT_EQ(dot.Open("."), 0);

  EXPECT_EQ(here.FolderPath(), "./");
  EXPECT_EQ(Rest(here), Rest(dot));
}

TEST(FileFind, TheFolderPathEndsWithOneSeparator) {
  const TempFolder folder;
  const std::string path = folder.Path();
  FileFind without;
  FileFind with;

  ASSERT_EQ(without.Open(path), 0);
  ASSERT_EQ(with.Open(path + "/"), 0);

  EXPECT_EQ(without.FolderPath(), path + "/");
  EXPECT_EQ(with.FolderPath(), path + "/");
}

TEST(FileFind, ALinkToAFolderIsOpened) {
  const TempFolder folder;
  WriteFile(folder / "target/file", "");
  fs::create_symlink("target", folder / "link");
  FileFind find;

  ASSERT_EQ(find.Open(folder / "link"), 0);

  EXPECT_EQ(Rest(find).count("file"), 1U);
}

TEST(FileFind, WhatIsNoReadableFolderHasItsCodeAndLeavesNothingOpen) {
  const TempFolder folder;
  WriteFile(folder / "file", "");
  fs::create_symlink("loop", folder / "loop");
  fs::create_directory(folder / "locked");
  fs::permissions(folder / "locked", fs::perms::none);
  const tests::WithoutReadingEverything rights;
  const std::size_t before = OpenFiles();
  struct Row {
    std::string path;
    std::uint32_t code;
  };

  for (const Row& row : {Row{folder / "missing", 0x80010102}, Row{folder / "missing/below", 0x80010102},
                         Row{folder / "file", 0x80010103}, Row{folder / "file/below", 0x80010103},
                         Row{folder / "locked", 0x80000045}, Row{folder / "locked/below", 0x80000045},
                         Row{folder / "loop", 0x8000006A}, Row{folder / std::string(256, 'n'), 0x8000005C}}) {
    FileFind find;
    EXPECT_EQ(find.Open(row.path), Code(row.code)) << row.path;
    EXPECT_FALSE(find.HasEntry()) << row.path;
    EXPECT_EQ(OpenFiles(), before) << row.path;
  }
  fs::permissions(folder / "locked", fs::perms::owner_all);
}

// Opened plainly, a fifo waits for somebody who writes to it.
TEST(FileFind, AFifoIsNotAFolderAndKeepsNobodyWaiting) {
  const TempFolder folder;
  ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0600), 0);
  const std::size_t before = OpenFiles();
  FileFind find;

  EXPECT_EQ(find.Open(folder / "fifo"), Code(0x80010103));

  EXPECT_FALSE(find.HasEntry());
  EXPECT_EQ(OpenFiles(), before);
}

TEST(FileFind, OneThatFailsWhenOpenedAgainHasLeftItsFirstFolder) {
  const TempFolder folder;
  const std::size_t before = OpenFiles();

  for (const std::string& path : {(folder / "missing").string(), "/" + std::string(5000, 'n')}) {
    FileFind find;
    ASSERT_EQ(find.Open(folder.Path()), 0);

    EXPECT_EQ(find.Open(path), Code(0x80010102));

    EXPECT_FALSE(find.HasEntry());
    EXPECT_EQ(find.FolderPath(), path);
    EXPECT_EQ(OpenFiles(), before);
  }
}

TEST(FileFind, OneThatIsOpenCanBeOpenedAgain) {
  const TempFolder folder;
  WriteFile(folder / "first/file", "");
  fs::create_directory(folder / "second");
  const std::size_t before = OpenFiles();
  FileFind find;
  ASSERT_EQ(find.Open(folder / "first"), 0);

  ASSERT_EQ(find.Open(folder / "second"), 0);

  EXPECT_EQ(Rest(find), (std::multiset<std::string>{".", ".."}));
  ASSERT_EQ(find.Open(find.FolderPath() + "../first"), 0);
  EXPECT_EQ(Rest(find).count("file"), 1U);
  EXPECT_EQ(OpenFiles(), before + 1);
}

// A folder that was removed while it was open has not even the dots.
TEST(FileFind, AFolderWithoutAnyEntryIsNotFound) {
  const TempFolder folder;
  fs::create_directory(folder / "removed");
  const int descriptor = ::open((folder / "removed").c_str(), O_RDONLY | O_DIRECTORY);
  ASSERT_GE(descriptor, 0);
  fs::remove(folder / "removed");
  const std::size_t before = OpenFiles();
  FileFind find;

  errno = EIO;
  const int result = find.Open("/proc/self/fd/" + std::to_string(descriptor));

  EXPECT_EQ(result, Code(0x8000004C));
  EXPECT_FALSE(find.HasEntry());
  EXPECT_EQ(OpenFiles(), before);
  ::close(descriptor);
}

TEST(FileFind, TheFolderIsClosedWithIt) {
  const TempFolder folder;
  const std::size_t before = OpenFiles();

  {
    FileFind find;
    ASSERT_EQ(find.Open(folder.Path()), 0);
    EXPECT_EQ(OpenFiles(), before + 1);
  }

  EXPECT_EQ(OpenFiles(), before);
}

// As it is in a process that was started without a standard input.
TEST(FileFind, DescriptorZeroIsOneLikeAnyOther) {
  const TempFolder folder;
  const int input = ::dup(STDIN_FILENO);
  ::close(STDIN_FILENO);
  FileFind find;

  const int result = find.Open(folder.Path());

  const int next_free = ::dup(input);
  ::close(next_free);
  find = FileFind();
  ::dup2(input, STDIN_FILENO);
  ::close(input);
  EXPECT_EQ(result, 0);
  EXPECT_GT(next_free, 0);
}

TEST(FileFind, AStartedProgramDoesNotInheritTheFolder) {
  const TempFolder folder;
  const int next_free = ::dup(STDIN_FILENO);
  ::close(next_free);
  FileFind find;

  ASSERT_EQ(find.Open(folder.Path()), 0);

  EXPECT_EQ(::fcntl(next_free, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST(FileFind, APathOf5000BytesIsOpened) {
  const TempFolder folder;
  WriteFile(folder / "target/file", "");
  std::string path = folder.Path();
  while (path.size() < 5000) {
    path += "/.";
  }
  const std::size_t before = OpenFiles();
  FileFind find;

  ASSERT_EQ(find.Open(path + "/target"), 0);

  EXPECT_EQ(find.FolderPath(), path + "/target/");
  EXPECT_EQ(Rest(find).count("file"), 1U);
  EXPECT_EQ(OpenFiles(), before + 1);
}

}  // namespace
}  // namespace tov::posix::filesystem
