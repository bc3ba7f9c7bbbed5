#include "tests/support/watched_calls.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "tests/support/process.h"
#include "tests/support/temp_folder.h"

namespace tests {
namespace {

class WatchedCalls : public testing::Test {
 protected:
  void SetUp() override {
    if (const std::string why = WhyCallsCannotBeWatched(); !why.empty()) {
      GTEST_SKIP() << why;
    }
    WriteFile(folder_ / "file", "content");
  }

  Command Cat() const { return Command("/bin/cat").Arguments({folder_ / "file"}); }

  bool IsOfFile(const WatchedCall& call) const { return call.Path() == folder_ / "file"; }

  TempFolder folder_;
};

TEST_F(WatchedCalls, AreSeenWithTheirNamesAndPaths) {
  std::vector<std::string> names;

  const Outcome outcome = Cat()
                              .Watched([&](const WatchedCall& call) {
                                if (IsOfFile(call)) {
                                  names.push_back(call.Name());
                                }
                                return Decision::Make();
                              })
                              .Run();

  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_EQ(outcome.out, "content");
  ASSERT_GE(names.size(), 3U);
  EXPECT_EQ(names.front(), "openat");
  EXPECT_EQ(names.back(), "close");
}

TEST_F(WatchedCalls, FailAsDecided) {
  const Outcome outcome = Cat()
                              .Watched([&](const WatchedCall& call) {
                                const bool isOpening = call.Name() == "openat" && IsOfFile(call);
                                return isOpening ? Decision::Fail(ENXIO) : Decision::Make();
                              })
                              .Run();

  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.err.find("No such device or address"), std::string::npos) << outcome;
}

TEST_F(WatchedCalls, ReadAsLittleAsDecided) {
  std::size_t reads = 0;

  const Outcome outcome = Cat()
                              .Watched([&](const WatchedCall& call) {
                                if (call.Name() != "read" || !IsOfFile(call)) {
                                  return Decision::Make();
                                }
                                ++reads;
                                return ReadAtMost(call, 1);
                              })
                              .Run();

  EXPECT_EQ(outcome.out, "content");
  EXPECT_EQ(reads, std::string("content").size() + 1);
}

TEST_F(WatchedCalls, EndWithTheTimeThatTheProgramIsGiven) {
  Command sleep("/bin/sleep");
  sleep.Arguments({"60"}).Timeout(std::chrono::milliseconds(200)).Watched([](const WatchedCall&) {
    return Decision::Make();
  });

  EXPECT_TRUE(sleep.Run().timed_out);
}

}  // namespace
}  // namespace tests
