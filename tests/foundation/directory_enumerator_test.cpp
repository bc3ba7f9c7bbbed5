#include "foundation/directory_enumerator.h"

#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "foundation/file_find.h"
#include "tests/foundation/open_files.h"
#include "tests/support/temp_folder.h"
#include "tests/support/without_reading_everything.h"

namespace tov::filesystem {
namespace {

namespace fs = std::filesystem;
using posix::filesystem::FileFind;
using tests::OpenFiles;
using tests::TempFolder;
using tests::WriteFile;
using Walk = DirectoryEnumerator<NoFollowSymLinksResolvingStrategy, FileFind>;
using Visits = std::vector<std::pair<std::string, std::string>>;  // Folder and entry.

int Code(std::uint32_t bits) {
  return static_cast<int>(bits);
}

Visits WalkThrough(const WideString& root) {
  Visits visits;
  Walk walk;
  EXPECT_EQ(walk.Open(root, {}), 0);
  while (!walk.IsFinished()) {
    visits.emplace_back(walk.CurrentFolder(), walk.CurrentEntry());
    walk.Next();
  }
  return visits;
}

Visits WalkThrough(const fs::path& root) {
  return WalkThrough(root.u16string());
}

// The same walk, written recursively: a folder that can be opened stands for all it holds, anything else for itself.
void Expect(const std::string& folder, DIR* open, Visits& visits) {
  while (const dirent* entry = ::readdir(open)) {
    const std::string name = entry->d_name;
    const std::string path = fs::path(folder) / name;
    const bool enters = name != "." && name != ".." && fs::symlink_status(path).type() == fs::file_type::directory;
    DIR* const below = enters ? ::opendir(path.c_str()) : nullptr;
    if (below == nullptr) {
      visits.emplace_back(folder, name);
    } else {
      Expect(path, below, visits);
    }
  }
  ::closedir(open);
}

Visits Expected(const fs::path& root) {
  Visits visits;
  Expect(root, ::opendir(root.c_str()), visits);
  return visits;
}

bool Visited(const Visits& visits, const fs::path& folder, const std::string& name) {
  return std::ranges::count(visits, std::pair(folder.string(), name)) == 1;
}

bool EnteredAny(const Visits& visits, const fs::path& folder) {
  return std::ranges::any_of(visits, [&](const auto& visit) { return visit.first == folder; });
}

TEST(DirectoryEnumerator, VisitsEveryEntryDepthFirstInTheSystemsOrder) {
  const TempFolder folder;
  for (const char* file :
       {"6.0.5/libhostfxr.so", "6.0.10/libhostfxr.so", "6.0.5/6.0.7/deep/deeper/file", "7.0.0/x/y"}) {
    WriteFile(folder / file, "");
  }
  for (int i = 0; i < 200; ++i) {
    WriteFile(folder / ("many/" + std::to_string(i) + (i % 3 == 0 ? "/file" : "")), "");
  }
  fs::create_directories(folder / "empty/emptier");

  const Visits visits = WalkThrough(folder.Path());

  EXPECT_TRUE(visits == Expected(folder.Path()));
  EXPECT_GT(visits.size(), 300U);
  EXPECT_TRUE(Visited(visits, folder / "6.0.5/6.0.7/deep/deeper", "file"));
}

TEST(DirectoryEnumerator, AFolderThatIsEnteredIsNoEntryOfItsOwn) {
  const TempFolder folder;
  WriteFile(folder / "below/file", "");

  const Visits visits = WalkThrough(folder.Path());

  EXPECT_FALSE(Visited(visits, folder.Path(), "below"));
  EXPECT_TRUE(Visited(visits, folder / "below", "file"));
}

TEST(DirectoryEnumerator, TheDotsAreVisitedAndNeverEntered) {
  const TempFolder folder;
  fs::create_directory(folder / "below");

  Visits visits = WalkThrough(folder.Path());

  std::ranges::sort(visits);
  const std::string root = folder.Path();
  EXPECT_EQ(visits, (Visits{{root, "."}, {root, ".."}, {root + "/below", "."}, {root + "/below", ".."}}));
}

TEST(DirectoryEnumerator, ANameThatBeginsWithDotsIsAnOrdinaryFolder) {
  const TempFolder folder;
  WriteFile(folder / "...", "");
  WriteFile(folder / ".hidden/file", "");
  WriteFile(folder / "..x/file", "");

  const Visits visits = WalkThrough(folder.Path());

  EXPECT_TRUE(Visited(visits, folder.Path(), "..."));
  EXPECT_TRUE(Visited(visits, folder / ".hidden", "file"));
  EXPECT_TRUE(Visited(visits, folder / "..x", "file"));
}

TEST(DirectoryEnumerator, ALinkIsListedAndNeverEnteredWhateverItPointsAt) {
  const TempFolder folder;
  const TempFolder elsewhere;
  WriteFile(elsewhere / "below/secret", "");
  WriteFile(folder / "real/file", "");
  fs::create_directory_symlink("real", folder / "near");
  fs::create_directory_symlink(elsewhere.Path(), folder / "far");
  fs::create_directory_symlink("..", folder / "real/up");
  fs::create_symlink("real/file", folder / "to a file");
  fs::create_symlink("nowhere", folder / "dangling");
  fs::create_symlink("loop", folder / "loop");

  const Visits visits = WalkThrough(folder.Path());

  EXPECT_TRUE(visits == Expected(folder.Path()));
  for (const char* link : {"near", "far", "to a file", "dangling", "loop"}) {
    EXPECT_TRUE(Visited(visits, folder.Path(), link)) << link;
    EXPECT_FALSE(EnteredAny(visits, folder / link)) << link;
  }
  EXPECT_TRUE(Visited(visits, folder / "real", "up"));
  EXPECT_FALSE(EnteredAny(visits, elsewhere / "below"));
}

TEST(DirectoryEnumerator, TheRootMayBeALink) {
  const TempFolder folder;
  WriteFile(folder / "real/below/file", "");
  fs::create_directory_symlink("real", folder / "link");

  const Visits visits = WalkThrough(folder / "link");

  EXPECT_TRUE(Visited(visits, folder / "link/below", "file"));
}

TEST(DirectoryEnumerator, TheRootStaysAsGivenAndNoSeparatorIsDoubled) {
  const TempFolder folder;
  WriteFile(folder / "below/deeper/file", "");
  const std::string root = folder.Path();

  Visits with = WalkThrough(fs::path(root + "/"));

  EXPECT_TRUE(Visited(with, root + "/", "."));
  EXPECT_TRUE(Visited(with, root + "/below", "."));
  EXPECT_TRUE(Visited(with, root + "/below/deeper", "file"));
}

// Run in a process of its own, whose current folder may be changed.
TEST(DirectoryEnumerator, AnEmptyRootIsTheCurrentFolderAndAddsNothingToPaths) {
  const TempFolder folder;
  WriteFile(folder / "below/deeper/file", "");
  const auto walk = [&] {
    fs::current_path(folder.Path());
    Visits visits = WalkThrough(WideString());
    std::ranges::sort(visits);
    const Visits expected{{"", "."},
                          {"", ".."},
                          {"below", "."},
                          {"below", ".."},
                          {"below/deeper", "."},
                          {"below/deeper", ".."},
                          {"below/deeper", "file"}};
    std::_Exit(visits == expected ? 0 : 1);
  };

  EXPECT_EXIT(walk(), testing::ExitedWithCode(0), "");
}

TEST(DirectoryEnumerator, AFolderThatCannotBeOpenedIsListedAndTheWalkContinues) {
  const TempFolder folder;
  for (const char* name : {"a", "b", "c", "d", "e"}) {
    WriteFile(folder / name / "file", "");
  }
  fs::permissions(folder / "c", fs::perms::none);
  const tests::WithoutReadingEverything rights;

  const Visits visits = WalkThrough(folder.Path());

  EXPECT_TRUE(visits == Expected(folder.Path()));
  EXPECT_TRUE(Visited(visits, folder.Path(), "c"));
  for (const char* name : {"a", "b", "d", "e"}) {
    EXPECT_TRUE(Visited(visits, folder / name, "file")) << name;
  }
  fs::permissions(folder / "c", fs::perms::owner_all);
}

TEST(DirectoryEnumerator, WhatIsInAFolderThatCannotBeSearchedIsListedOnly) {
  const TempFolder folder;
  WriteFile(folder / "locked/below/file", "");
  fs::permissions(folder / "locked", fs::perms::owner_read);
  const tests::WithoutReadingEverything rights;

  const Visits visits = WalkThrough(folder.Path());

  EXPECT_TRUE(Visited(visits, folder / "locked", "below"));
  EXPECT_FALSE(EnteredAny(visits, folder / "locked/below"));
  fs::permissions(folder / "locked", fs::perms::owner_all);
}

TEST(DirectoryEnumerator, WithoutAFreeDescriptorASubfolderIsListedAndTheWalkContinues) {
  const TempFolder folder;
  for (const char* name : {"a/b/c/d/file", "e/f/g/h/file"}) {
    WriteFile(folder / name, "");
  }
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  const int next_free = ::dup(STDIN_FILENO);
  ::close(next_free);
  const rlimit three_more{static_cast<rlim_t>(next_free) + 3, before.rlim_max};

  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &three_more), 0);
  const Visits visits = WalkThrough(folder.Path());
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);

  EXPECT_TRUE(Visited(visits, folder / "a/b", "c"));
  EXPECT_TRUE(Visited(visits, folder / "e/f", "g"));
}

TEST(DirectoryEnumerator, ARootThatCannotBeOpenedHasItsCodeAndNothingIsWalked) {
  const TempFolder folder;
  WriteFile(folder / "file", "");
  const std::size_t before = OpenFiles();
  struct Row {
    WideString root;
    std::uint32_t code;
  };

  for (const Row& row :
       {Row{(folder / "missing").u16string(), 0x80010102}, Row{(folder / "file").u16string(), 0x80010103},
        Row{folder.Path().u16string() + u"/" + char16_t{0xD800}, 0x80010102}}) {
    Walk walk;
    EXPECT_EQ(walk.Open(row.root, {}), Code(row.code)) << testing::PrintToString(row.root);
    EXPECT_TRUE(walk.IsFinished());
    EXPECT_EQ(OpenFiles(), before);
  }
}

TEST(DirectoryEnumerator, ANameThatIsNotAsciiIsReached) {
  const TempFolder folder;
  WriteFile(folder / "caf\xC3\xA9 \xF0\x9F\x98\x80/file", "");

  const Visits visits = WalkThrough(folder.Path().u16string() + u"/caf\u00E9 \U0001F600");

  EXPECT_TRUE(Visited(visits, folder / "caf\xC3\xA9 \xF0\x9F\x98\x80", "file"));
}

TEST(DirectoryEnumerator, AFolderWhoseNameIsNotUtf8IsEntered) {
  const TempFolder folder;
  WriteFile(folder / "6.0.\xff\xc0/file", "");

  const Visits visits = WalkThrough(folder.Path());

  EXPECT_TRUE(Visited(visits, folder / "6.0.\xff\xc0", "file"));
}

TEST(DirectoryEnumerator, AFifoIsAnEntryLikeAnyOther) {
  const TempFolder folder;
  ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0600), 0);

  const Visits visits = WalkThrough(folder.Path());

  EXPECT_TRUE(Visited(visits, folder.Path(), "fifo"));
  EXPECT_EQ(visits.size(), 3U);
}

TEST(DirectoryEnumerator, AnUnfinishedWalkClosesAllItsFolders) {
  const TempFolder folder;
  fs::create_directories(folder / "a/b/c");
  const std::size_t before = OpenFiles();

  {
    Walk walk;
    ASSERT_EQ(walk.Open(folder.Path().u16string(), {}), 0);
    while (!walk.CurrentFolder().ends_with("/c")) {
      walk.Next();
    }
    EXPECT_EQ(OpenFiles(), before + 4);
  }

  EXPECT_EQ(OpenFiles(), before);
}

TEST(DirectoryEnumerator, AFinishedWalkHasNothingOpen) {
  const TempFolder folder;
  fs::create_directories(folder / "a/b");
  const std::size_t before = OpenFiles();
  Walk walk;

  ASSERT_EQ(walk.Open(folder.Path().u16string(), {}), 0);
  while (!walk.IsFinished()) {
    walk.Next();
  }

  EXPECT_EQ(OpenFiles(), before);
}

TEST(DirectoryEnumerator, FoldersBelowTheLongestPathOfTheSystemAreReached) {
  const TempFolder folder;
  const std::string name(250, 'n');
  int descriptor = ::open(folder.Path().c_str(), O_RDONLY);
  std::string path = folder.Path();
  while (path.size() < 6000) {
    ASSERT_EQ(::mkdirat(descriptor, name.c_str(), 0700), 0);
    const int next = ::openat(descriptor, name.c_str(), O_RDONLY);
    ::close(descriptor);
    descriptor = next;
    path += "/" + name;
  }
  ::close(::openat(descriptor, "file", O_WRONLY | O_CREAT, 0600));
  ::close(descriptor);

  const Visits visits = WalkThrough(folder.Path());

  EXPECT_TRUE(Visited(visits, path, "file"));
}

TEST(DirectoryEnumerator, AFreshOneIsFinished) {
  EXPECT_TRUE(Walk().IsFinished());
}

TEST(DirectoryEnumeratorStack, TheLastFolderPushedIsOnTopUntilItIsPopped) {
  const TempFolder folder;
  const std::size_t before = OpenFiles();
  Walk::Stack stack;
  EXPECT_TRUE(stack.IsEmpty());

  for (const char* path : {"first", "second"}) {
    auto find = std::make_unique<FileFind>();
    ASSERT_EQ(find->Open(folder.Path()), 0);
    const FileFind* pushed = find.get();
    stack.Push(find, path);
    EXPECT_EQ(find, nullptr);
    EXPECT_EQ(&stack.TopFind(), pushed);
    EXPECT_EQ(stack.TopPath(), path);
  }

  EXPECT_EQ(OpenFiles(), before + 2);
  stack.Pop();
  EXPECT_EQ(stack.TopPath(), "first");
  EXPECT_EQ(OpenFiles(), before + 1);
  stack.Pop();
  EXPECT_TRUE(stack.IsEmpty());
  EXPECT_EQ(OpenFiles(), before);
}

}  // namespace
}  // namespace tov::filesystem
