// Thousands of random products: each launch ends as the doctor said it would.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string>

#include "tests/prediction/random_layout.h"

namespace tests {
namespace {

// A failing layout is made again with PREDICTION_SEED and PREDICTION_LAYOUT, which is its number.
constexpr std::uint64_t kSeed = 20220630;
constexpr std::uint64_t kParts = 4;
constexpr std::uint64_t kLayoutsOfAPart = 1000;
constexpr int kFailuresShown = 5;

std::uint64_t Given(const char* variable, std::uint64_t otherwise) {
  const char* value = std::getenv(variable);
  return value != nullptr ? std::strtoull(value, nullptr, 10) : otherwise;
}

std::uint64_t Seed() {
  return Given("PREDICTION_SEED", kSeed);
}

// Lays one out, compares, and shows how to make it again when doctor and launcher differ.
Comparison CompareLayout(std::uint64_t number) {
  Choice choice(Seed(), number);
  Ground ground("/var/opt/morvath/layout");
  StandInHost host;
  Start start;
  LayOut(choice, ground, host, start);

  Comparison comparison = Compare(host, start);

  EXPECT_EQ(comparison.difference, "") << "PREDICTION_SEED=" << Seed() << " PREDICTION_LAYOUT=" << number << "\n"
                                       << ground.Recipe();
  return comparison;
}

class RandomLayouts : public testing::TestWithParam<std::uint64_t> {};

TEST_P(RandomLayouts, EndAsTheDoctorSays) {
  if (std::getenv("PREDICTION_LAYOUT") != nullptr) {
    GTEST_SKIP() << "PREDICTION_LAYOUT asks for one layout only";
  }
  std::map<std::string, std::uint64_t> outcomes;
  int failures = 0;
  for (std::uint64_t i = 0; i < kLayoutsOfAPart && failures < kFailuresShown; ++i) {
    const Comparison comparison = CompareLayout(GetParam() * kLayoutsOfAPart + i);
    ++outcomes[comparison.outcome];
    failures += comparison.difference.empty() ? 0 : 1;
  }
  for (const auto& [outcome, count] : outcomes) {
    RecordProperty(outcome, static_cast<int>(count));
  }

  if (failures == 0) {  // Layouts that all end alike would show nothing.
    EXPECT_GE(outcomes["runs"], kLayoutsOfAPart / 5);
    EXPECT_GE(outcomes["status-255"], kLayoutsOfAPart / 5);
    EXPECT_GE(outcomes["aborts"], kLayoutsOfAPart / 50);
    EXPECT_GE(outcomes["dies"], 1U);
    EXPECT_GE(outcomes["exits"], 1U);
  }
}

INSTANTIATE_TEST_SUITE_P(Parts, RandomLayouts, testing::Range(std::uint64_t{0}, kParts));

TEST(RandomLayout, OfThatNumberEndsAsTheDoctorSays) {
  if (std::getenv("PREDICTION_LAYOUT") == nullptr) {
    GTEST_SKIP() << "PREDICTION_LAYOUT names no layout";
  }
  CompareLayout(Given("PREDICTION_LAYOUT", 0));
}

}  // namespace
}  // namespace tests
