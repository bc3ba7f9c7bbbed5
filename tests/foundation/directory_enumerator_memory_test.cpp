#include <gtest/gtest.h>

#include "foundation/directory_enumerator.h"
#include "foundation/file_find.h"
#include "tests/foundation/failing_memory.h"

namespace tov::filesystem {
namespace {

using Walk = DirectoryEnumerator<NoFollowSymLinksResolvingStrategy, posix::filesystem::FileFind>;

TEST(DirectoryEnumeratorMemory, ARootThatCannotBeConvertedIsTheConversionsFailure) {
  const WideString root(1000, u'/');
  Walk walk;
  int result = 0;

  {
    const tests::FailingMemory memory(0);
    result = walk.Open(root, {});
  }

  EXPECT_EQ(result, static_cast<int>(0x80000041U));
  EXPECT_TRUE(walk.IsFinished());
}

}  // namespace
}  // namespace tov::filesystem
