#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "foundation/long_path.h"
#include "tests/foundation/failing_memory.h"
#include "tests/foundation/open_files.h"

namespace tov::posix::filesystem::detail::long_path {
namespace {

using tests::FailingMemory;

constexpr int kOutOfMemory = static_cast<int>(0x80000041U);

std::string FolderOf(std::size_t length) {
  std::string path(length, '.');
  for (std::size_t i = 1; i < path.size(); i += 2) {
    path[i] = '/';
  }
  return path;
}

TEST(LongPathMemory, ALongPathWithoutABufferIsOutOfMemory) {
  const std::string path = FolderOf(5001);
  struct stat status {};
  int result = 0;
  bool failed = false;

  {
    const FailingMemory memory(0);
    result = Stat(path.c_str(), status);
    failed = memory.HasFailed();
  }

  EXPECT_TRUE(failed);
  EXPECT_EQ(result, kOutOfMemory);
  EXPECT_EQ(Stat(path.c_str(), status), 0);
}

TEST(LongPathMemory, AShortPathNeedsNoMemory) {
  const std::string path = FolderOf(4095);
  struct stat status {};
  int result = -1;

  {
    const FailingMemory memory(0);
    result = Stat(path.c_str(), status);
  }

  EXPECT_EQ(result, 0);
}

TEST(LongPathMemory, TheBufferIsFreedWhenTheWalkFails) {
  const std::size_t before = tests::AllocationsAlive();
  const std::string path = "./no such folder/" + FolderOf(5001);
  FileAccessor accessor;
  const std::size_t with_path = tests::AllocationsAlive();

  EXPECT_LT(accessor.Initialize(path.c_str()), 0);

  EXPECT_EQ(tests::AllocationsAlive(), with_path);
  EXPECT_GT(with_path, before);
}

}  // namespace
}  // namespace tov::posix::filesystem::detail::long_path
