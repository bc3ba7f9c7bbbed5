// What the executables have in the place of the C library's newest functions does what those do.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "foundation/file_descriptor.h"
#include "tests/support/temp_folder.h"

namespace tests {
namespace {

TEST(OldCLibrary, TheStatusOfAFileIsTheSameByEveryFunction) {
  const TempFolder folder;
  WriteFile(folder / "file", "12345");
  const tov::posix::FileDescriptor file(::open((folder / "file").c_str(), O_RDONLY | O_CLOEXEC));
  struct stat byName {};
  struct stat byDescriptor {};
  struct stat byFolder {};
  struct stat64 byOtherName {};

  EXPECT_EQ(::stat((folder / "file").c_str(), &byName), 0);
  EXPECT_EQ(::fstat(file.Get(), &byDescriptor), 0);
  EXPECT_EQ(::fstatat(AT_FDCWD, (folder / "file").c_str(), &byFolder, 0), 0);
  EXPECT_EQ(::fstat64(file.Get(), &byOtherName), 0);

  EXPECT_EQ(byName.st_size, 5);
  EXPECT_EQ(byDescriptor.st_size, 5);
  EXPECT_EQ(byFolder.st_size, 5);
  EXPECT_EQ(byOtherName.st_size, 5);
  EXPECT_EQ(byOtherName.st_ino, byName.st_ino);
}

TEST(OldCLibrary, TheStatusOfALinkIsItsOwnByOneFunctionOnly) {
  const TempFolder folder;
  std::filesystem::create_symlink(folder.Path(), folder / "link");
  struct stat followed {};
  struct stat own {};

  EXPECT_EQ(::stat((folder / "link").c_str(), &followed), 0);
  EXPECT_EQ(::lstat((folder / "link").c_str(), &own), 0);

  EXPECT_TRUE(S_ISDIR(followed.st_mode));
  EXPECT_TRUE(S_ISLNK(own.st_mode));
}

}  // namespace
}  // namespace tests
