#include "foundation/file_descriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <type_traits>
#include <utility>

#include "tests/foundation/open_files.h"

namespace tov::posix {
namespace {

using tests::OpenFiles;

static_assert(!std::is_copy_constructible_v<FileDescriptor> && !std::is_copy_assignable_v<FileDescriptor>);
static_assert(std::is_nothrow_move_constructible_v<FileDescriptor>);

FileDescriptor Opened() {
  return FileDescriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC));
}

bool IsOpenInTheProcess(int descriptor) {
  return ::fcntl(descriptor, F_GETFD) != -1;
}

TEST(FileDescriptor, ClosesWhatItHoldsWhenDestroyed) {
  const std::size_t before = OpenFiles();

  {
    const FileDescriptor file = Opened();
    EXPECT_TRUE(file.IsOpen());
    EXPECT_EQ(OpenFiles(), before + 1);
  }

  EXPECT_EQ(OpenFiles(), before);
}

TEST(FileDescriptor, AMovedOneHasOneOwnerOnly) {
  const std::size_t before = OpenFiles();
  FileDescriptor first = Opened();
  const int number = first.Get();

  const FileDescriptor second(std::move(first));

  EXPECT_EQ(second.Get(), number);
  EXPECT_FALSE(first.IsOpen());  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(OpenFiles(), before + 1);
}

TEST(FileDescriptor, AssigningClosesWhatItHeld) {
  FileDescriptor file = Opened();
  const int replaced = file.Get();
  FileDescriptor other = Opened();
  const int kept = other.Get();

  file = std::move(other);

  EXPECT_EQ(file.Get(), kept);
  EXPECT_FALSE(IsOpenInTheProcess(replaced));
  EXPECT_TRUE(IsOpenInTheProcess(kept));
}

TEST(FileDescriptor, AssignedToItselfItStaysOpen) {
  FileDescriptor file = Opened();
  FileDescriptor& same = file;

  file = std::move(same);

  EXPECT_TRUE(file.IsOpen());
  EXPECT_TRUE(IsOpenInTheProcess(file.Get()));
}

TEST(FileDescriptor, AReleasedOneIsTheNewOwnersToClose) {
  FileDescriptor file = Opened();
  const FileDescriptor owner(file.Release());

  EXPECT_FALSE(file.IsOpen());
  EXPECT_TRUE(IsOpenInTheProcess(owner.Get()));
}

TEST(FileDescriptor, CanBeClosedEarlyAndMoreThanOnce) {
  const std::size_t before = OpenFiles();
  FileDescriptor file = Opened();

  file.Close();
  file.Close();

  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(OpenFiles(), before);
}

TEST(FileDescriptor, ANegativeNumberIsKeptAndNotOpen) {
  for (const int number : {-1, AT_FDCWD}) {
    const FileDescriptor none(number);

    EXPECT_FALSE(none.IsOpen());
    EXPECT_EQ(none.Get(), number);
  }
  EXPECT_FALSE(FileDescriptor().IsOpen());
}

// Closing number 5000 fails with EBADF, which would hide why a step before it failed.
TEST(FileDescriptor, ClosingLeavesTheErrorNumberAlone) {
  errno = EIO;

  { const FileDescriptor never_opened(5000); }

  EXPECT_EQ(errno, EIO);
}

}  // namespace
}  // namespace tov::posix
