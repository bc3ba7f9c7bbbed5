#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "netloader/utils/current_time.h"
#include "tests/netloader/utils/clock.h"

namespace netloader::utils {
namespace {

using tests::ScopedClock;
using tests::TheClock;

std::string FailureText() {
  try {
    GetCurrentTimeString(true);
    return "none";
  } catch (const std::runtime_error& failure) {
    return failure.what();
  }
}

TEST(CurrentTimeSystem, NumbersAreFilledWithZeros) {
  const ScopedClock clock;

  EXPECT_EQ(GetCurrentTimeString(true), "2024-03-01 13:05:09");
  EXPECT_EQ(GetCurrentTimeString(false), "2024-03-01 13:05:09");
}

TEST(CurrentTimeSystem, TheTextIsOfOneFormatAndAtMost99BytesLong) {
  const ScopedClock clock;

  static_cast<void>(GetCurrentTimeString(false));

  EXPECT_EQ(TheClock().format, "%F %T");
  EXPECT_EQ(TheClock().room, 99U);
}

TEST(CurrentTimeSystem, WithoutALocalTimeItThrowsWhenAskedToAndIsEmptyOtherwise) {
  const ScopedClock clock;
  TheClock().has_local_time = false;

  EXPECT_EQ(FailureText(), "Failed to get current time ...");
  EXPECT_EQ(GetCurrentTimeString(false), "");
}

TEST(CurrentTimeSystem, WithoutATextItThrowsWhenAskedToAndIsEmptyOtherwise) {
  const ScopedClock clock;
  TheClock().has_text = false;

  EXPECT_EQ(FailureText(), "Failed to convert current time to string ...");
  EXPECT_EQ(GetCurrentTimeString(false), "");
}

}  // namespace
}  // namespace netloader::utils
