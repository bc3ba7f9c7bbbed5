#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>

#include "foundation/long_path.h"
#include "tests/foundation/open_files.h"
#include "tests/foundation/system_calls.h"

namespace tov::posix::filesystem::detail::long_path {
namespace {

using tests::CountedCalls;
using tests::FailingCall;
using tests::OpenFiles;
using tests::SystemCall;

// "./././." of an odd length; every stretch of it is the current folder again.
std::string Dots(std::size_t length) {
  std::string path(length, '.');
  for (std::size_t i = 1; i < path.size(); i += 2) {
    path[i] = '/';
  }
  return path;
}

TEST(LongPathSystem, EachStretchIsOneOpenOfAsMuchAsFits) {
  const std::string path = Dots(10'001);
  const CountedCalls calls(SystemCall::kOpenat);
  FileAccessor accessor;

  ASSERT_EQ(accessor.Initialize(path.c_str()), 0);

  ASSERT_EQ(calls.Number(), 2U);
  EXPECT_EQ(calls.Paths()[0].size(), 4095U);
  EXPECT_EQ(calls.Paths()[1].size(), 4095U);
  EXPECT_EQ(std::string(accessor.Name()), path.substr(8192));
}

TEST(LongPathSystem, AnOpenThatFailsHasItsCodeAndLeavesNothingOpen) {
  const std::size_t before = OpenFiles();
  for (const std::size_t successes : {0U, 1U}) {
    const FailingCall fault(SystemCall::kOpenat, successes, EMFILE);
    struct stat status {};

    EXPECT_EQ(Stat(Dots(10'001).c_str(), status), static_cast<int>(0x80060000U | EMFILE)) << successes;

    EXPECT_TRUE(fault.HasFailed()) << successes;
    EXPECT_EQ(OpenFiles(), before) << successes;
  }
}

TEST(LongPathSystem, AFailureWithoutAnErrorNumberLetsTheWalkContinue) {
  const FailingCall fault(SystemCall::kOpenat, 0, 0);
  const CountedCalls calls(SystemCall::kOpenat);
  const std::string path = Dots(10'001);
  FileAccessor accessor;

  EXPECT_EQ(accessor.Initialize(path.c_str()), 0);

  EXPECT_TRUE(fault.HasFailed());
  EXPECT_EQ(calls.Number(), 2U);
  EXPECT_EQ(std::string(accessor.Name()), path.substr(8192));
}

}  // namespace
}  // namespace tov::posix::filesystem::detail::long_path
