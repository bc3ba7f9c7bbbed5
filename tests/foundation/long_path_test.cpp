#include "foundation/long_path.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>

#include "tests/foundation/open_files.h"
#include "tests/support/temp_folder.h"
#include "tests/support/without_reading_everything.h"

namespace tov::posix::filesystem::detail::long_path {
namespace {

namespace fs = std::filesystem;
using tests::OpenFiles;
using tests::TempFolder;
using tests::WriteFile;

int Code(std::uint32_t bits) {
  return static_cast<int>(bits);
}

// A path of exactly this length that leads from `folder` to `name`: it goes through "." as often as it takes, and
// begins with a doubled separator when an odd number of bytes is missing.
std::string PathOfLength(const fs::path& folder, const std::string& name, std::size_t length) {
  std::string path = folder.string();
  const auto missing = [&] { return length - path.size() - 1 - name.size(); };
  if (missing() % 2 != 0) {
    path += '/';
  }
  while (missing() > 1) {
    path += "/.";
  }
  EXPECT_EQ(missing(), 0U);
  return path + "/" + name;
}

TEST(LongPath, AShortPathIsUsedAsItIs) {
  const std::string path = std::string(4094, '/') + "x";
  FileAccessor accessor;

  EXPECT_EQ(accessor.Initialize(path.c_str()), 0);

  EXPECT_EQ(accessor.Descriptor(), AT_FDCWD);
  EXPECT_EQ(accessor.Name(), path.c_str());
}

TEST(LongPath, APathOf5000BytesIsOpenedThroughItsFirstPart) {
  const TempFolder folder;
  WriteFile(folder / "file", "12345");
  const std::string path = PathOfLength(folder.Path(), "file", 5000);
  const std::size_t before = OpenFiles();
  FileAccessor accessor;

  ASSERT_EQ(accessor.Initialize(path.c_str()), 0);

  EXPECT_GE(accessor.Descriptor(), 0);
  EXPECT_EQ(OpenFiles(), before + 1);
  EXPECT_LE(std::strlen(accessor.Name()), 5000U - 4000U);
  EXPECT_TRUE(path.ends_with(accessor.Name()));
  struct stat status {};
  EXPECT_EQ(::fstatat(accessor.Descriptor(), accessor.Name(), &status, 0), 0);
  EXPECT_EQ(status.st_size, 5);
}

TEST(LongPath, TheDescriptorIsClosedWithIt) {
  const std::size_t before = OpenFiles();
  const TempFolder folder;

  {
    FileAccessor accessor;
    ASSERT_EQ(accessor.Initialize(PathOfLength(folder.Path(), "any", 20'000).c_str()), 0);
    EXPECT_EQ(OpenFiles(), before + 1);
  }

  EXPECT_EQ(OpenFiles(), before);
}

// As it is in a process that was started without a standard input.
TEST(LongPath, DescriptorZeroIsOneLikeAnyOther) {
  const TempFolder folder;
  WriteFile(folder / "file", "12345");
  const std::string path = PathOfLength(folder.Path(), "file", 20'000);
  const int input = ::dup(STDIN_FILENO);
  ::close(STDIN_FILENO);
  const std::size_t before = OpenFiles();
  struct stat status {};

  const int result = Stat(path.c_str(), status);

  EXPECT_EQ(OpenFiles(), before);
  ::dup2(input, STDIN_FILENO);
  ::close(input);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(status.st_size, 5);
}

TEST(LongPath, AnAccessorCanBeUsedAgain) {
  const TempFolder folder;
  const std::string path = PathOfLength(folder.Path(), "any", 5000);
  const std::size_t before = OpenFiles();
  FileAccessor accessor;

  ASSERT_EQ(accessor.Initialize(path.c_str()), 0);
  ASSERT_EQ(accessor.Initialize(path.c_str()), 0);
  EXPECT_EQ(OpenFiles(), before + 1);
  ASSERT_EQ(accessor.Initialize("short"), 0);

  EXPECT_EQ(accessor.Descriptor(), AT_FDCWD);
  EXPECT_EQ(OpenFiles(), before);
}

TEST(LongPath, AnAccessorThatFailsWhenUsedAgainHoldsNothing) {
  const TempFolder folder;
  const std::string reached = PathOfLength(folder.Path(), "any", 5000);
  const std::string missing = PathOfLength(folder / "missing", "any", 5000);
  const std::string missing_later = PathOfLength(folder.Path(), "missing", 5000) + "/" + std::string(4095, '.');
  const std::size_t before = OpenFiles();

  for (const std::string& path : {missing, missing_later}) {
    FileAccessor accessor;
    ASSERT_EQ(accessor.Initialize(reached.c_str()), 0);

    EXPECT_EQ(accessor.Initialize(path.c_str()), Code(0x80010102));

    EXPECT_EQ(accessor.Name(), nullptr);
    EXPECT_EQ(accessor.Descriptor(), AT_FDCWD);
    EXPECT_EQ(OpenFiles(), before);
  }
}

// One byte to either side of every length at which one more stretch is needed, and some that are far above.
TEST(LongPath, StatReachesAFileByAPathOfAnyLength) {
  const TempFolder folder;
  WriteFile(folder / "file", "12345");
  const std::size_t before = OpenFiles();

  for (const std::size_t length :
       {100U,  4090U, 4091U, 4092U, 4093U, 4094U, 4095U, 4096U,  4097U,  4098U,   4099U,
        8188U, 8189U, 8190U, 8191U, 8192U, 8193U, 8194U, 12286U, 12287U, 40'000U, 100'001U}) {
    const std::string path = PathOfLength(folder.Path(), "file", length);
    ASSERT_EQ(path.size(), length);
    struct stat status {};
    EXPECT_EQ(Stat(path.c_str(), status), 0) << length;
    EXPECT_EQ(status.st_size, 5) << length;
    EXPECT_EQ(OpenFiles(), before) << length;
  }
}

TEST(LongPath, StatReachesAFileByARelativePathOfAnyLength) {
  std::string path = ".";
  while (path.size() < 9000) {
    path += "/.";
  }
  struct stat here {};
  struct stat status {};
  ASSERT_EQ(::stat(".", &here), 0);

  EXPECT_EQ(Stat(path.c_str(), status), 0);

  EXPECT_EQ(status.st_ino, here.st_ino);
}

TEST(LongPath, StatReachesFoldersThatAreReallyThatDeep) {
  const TempFolder folder;
  std::string path = folder.Path();
  const std::string name(250, 'n');
  int descriptor = ::open(path.c_str(), O_RDONLY);
  while (path.size() < 6000) {
    ASSERT_EQ(::mkdirat(descriptor, name.c_str(), 0700), 0);
    const int next = ::openat(descriptor, name.c_str(), O_RDONLY);
    ASSERT_GE(next, 0);
    ::close(descriptor);
    descriptor = next;
    path += "/" + name;
  }
  struct stat deep {};
  struct stat status {};
  ASSERT_EQ(::fstat(descriptor, &deep), 0);
  ::close(descriptor);

  EXPECT_EQ(Stat(path.c_str(), status), 0);

  EXPECT_EQ(status.st_ino, deep.st_ino);
}

TEST(LongPath, StatDoesNotFollowAFinalLink) {
  const TempFolder folder;
  fs::create_directory(folder / "target");
  fs::create_symlink("target", folder / "link");

  for (const std::size_t length : {200U, 5000U}) {
    struct stat status {};
    EXPECT_EQ(Stat(PathOfLength(folder.Path(), "link", length).c_str(), status), 0) << length;
    EXPECT_TRUE(S_ISLNK(status.st_mode)) << length;
  }
}

TEST(LongPath, StatFollowsTheLinksOnTheWay) {
  const TempFolder folder;
  WriteFile(folder / "target/file", "123");
  fs::create_symlink("target", folder / "link");

  for (const std::size_t length : {200U, 5000U}) {
    struct stat status {};
    EXPECT_EQ(Stat(PathOfLength(folder / "link/../link", "file", length).c_str(), status), 0) << length;
    EXPECT_EQ(status.st_size, 3) << length;
  }
}

TEST(LongPath, AStretchWithoutASeparatorIsAMissingPath) {
  const TempFolder folder;
  struct stat status {};
  const std::string good = PathOfLength(folder.Path(), "x", 4000);

  EXPECT_EQ(Stat(std::string(4096, 'n').c_str(), status), Code(0x80010102));
  EXPECT_EQ(Stat(std::string(5000, 'n').c_str(), status), Code(0x80010102));
  EXPECT_EQ(Stat((good.substr(0, 3998) + "/" + std::string(5000, 'n')).c_str(), status), Code(0x80010102));
}

// Opened plainly, a fifo waits for somebody who writes to it.
TEST(LongPath, AFifoOnTheWayIsNotAFolderAndKeepsNobodyWaiting) {
  const TempFolder folder;
  ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0600), 0);
  const std::string path = PathOfLength(folder.Path(), "fifo", 4095) + "/" + std::string(200, 'n');
  struct stat status {};

  EXPECT_EQ(Stat(path.c_str(), status), Code(0x80010103));
}

// What follows the cut is taken as it stands, so it begins at the root.
TEST(LongPath, ASeparatorDoubledWhereThePathIsCutIsNotSkipped) {
  const TempFolder folder;
  fs::create_directory(folder / "below");
  const std::string path = PathOfLength(folder.Path(), "below", 4095) + "//dev/null";
  FileAccessor accessor;
  struct stat status {};

  ASSERT_EQ(accessor.Initialize(path.c_str()), 0);

  EXPECT_STREQ(accessor.Name(), "/dev/null");
  EXPECT_EQ(Stat(path.c_str(), status), 0);
}

TEST(LongPath, AFolderOnTheWayMustBeReadable) {
  const TempFolder folder;
  WriteFile(folder / "searched/file", "");
  fs::permissions(folder / "searched", fs::perms::owner_exec);
  const tests::WithoutReadingEverything rights;
  const std::string path = PathOfLength(folder.Path(), "searched", 4095) + "/./file";
  struct stat status {};

  EXPECT_EQ(Stat((folder / "searched/file").c_str(), status), 0);
  EXPECT_EQ(Stat(path.c_str(), status), Code(0x80000045));

  fs::permissions(folder / "searched", fs::perms::owner_all);
}

TEST(LongPath, FailuresHaveTheirCodesAndLeaveNothingOpen) {
  const TempFolder folder;
  WriteFile(folder / "file", "");
  fs::create_directory(folder / "locked");
  fs::permissions(folder / "locked", fs::perms::none);
  const tests::WithoutReadingEverything rights;
  const std::size_t before = OpenFiles();
  std::string tail;
  while (tail.size() < 5000) {
    tail += "/.";
  }
  const std::string name_too_long = "/" + std::string(256, 'n');
  struct Row {
    std::string path;
    std::uint32_t code;
  };

  for (const Row& row :
       {Row{folder / "missing", 0x80010102}, Row{(folder / "missing").string() + tail, 0x80010102},
        Row{folder.Path().string() + tail + "/missing", 0x80010102}, Row{folder / "file/x", 0x80010103},
        Row{(folder / "file").string() + tail, 0x80010103}, Row{(folder / "locked").string() + tail, 0x80000045},
        Row{folder.Path().string() + tail + "/locked/x", 0x80000045},
        Row{folder.Path().string() + name_too_long, 0x8000005C},
        Row{folder.Path().string() + tail + name_too_long + tail, 0x8000005C}, Row{"", 0x80010102}}) {
    struct stat status {};
    EXPECT_EQ(Stat(row.path.c_str(), status), Code(row.code))
        << row.path.size() << " bytes: " << row.path.substr(0, 80);
    EXPECT_EQ(OpenFiles(), before) << row.path.size() << " bytes: " << row.path.substr(0, 80);
  }
  fs::permissions(folder / "locked", fs::perms::owner_all);
}

}  // namespace
}  // namespace tov::posix::filesystem::detail::long_path
