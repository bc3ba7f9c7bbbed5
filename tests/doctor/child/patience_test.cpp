#include "doctor/child/patience.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <vector>

namespace doctor {
namespace {

using namespace std::chrono_literals;

TEST(Patience, WhoeverWantsToKnowHearsWhatIsWaitedForAndThatItIsOver) {
  std::array<int, 2> heard{};
  ASSERT_EQ(::pipe(heard.data()), 0);
  std::vector<std::string> said;
  const Patience patience{60s, [&](const std::string& what) {
                            said.push_back(what);
                            ASSERT_EQ(::write(heard[1], "!", 1), 1);
                          }};
  const auto untilHeard = [&] {
    char mark = 0;
    return Answer{std::to_string(::read(heard[0], &mark, 1))};
  };

  const ChildResult result = RunInChild(untilHeard, "somebody", patience);

  ::close(heard[0]);
  ::close(heard[1]);
  EXPECT_EQ(result.answer, Answer{"1"});
  EXPECT_EQ(said, (std::vector<std::string>{"somebody", ""}));
}

}  // namespace
}  // namespace doctor
