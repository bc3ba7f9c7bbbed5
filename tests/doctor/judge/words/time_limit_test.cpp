#include "doctor/judge/words/time_limit.h"

#include <gtest/gtest.h>

namespace doctor {
namespace {

TEST(TimeLimit, SecondsHaveTheDecimalsThatTheyNeed) {
  struct Row {
    int milliseconds;
    const char* text;
  };
  const Row rows[] = {{0, "0"}, {1, "0.001"}, {250, "0.25"}, {500, "0.5"}, {1000, "1"}, {1050, "1.05"}, {60'000, "60"}};
  for (const auto& [milliseconds, text] : rows) {
    EXPECT_EQ(Seconds(std::chrono::milliseconds(milliseconds)), text);
  }
}

}  // namespace
}  // namespace doctor
