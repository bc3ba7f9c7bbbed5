#include "tests/netloader/utils/clock.h"

#include <algorithm>
#include <cstring>

namespace tests {

Clock& TheClock() {
  static Clock clock;
  return clock;
}

ScopedClock::ScopedClock() {
  TheClock() = Clock();
  TheClock().local.tm_year = 2024 - 1900;
  TheClock().local.tm_mon = 2;
  TheClock().local.tm_mday = 1;
  TheClock().local.tm_hour = 13;
  TheClock().local.tm_min = 5;
  TheClock().local.tm_sec = 9;
}

ScopedClock::~ScopedClock() {
  TheClock() = Clock();
}

}  // namespace tests

extern "C" {

std::tm* localtime_r(const std::time_t* /*time*/, std::tm* local) {
  const tests::Clock& clock = tests::TheClock();
  *local = clock.local;
  return clock.has_local_time ? local : nullptr;
}

// Knows the one format that there is.
std::size_t strftime(char* text, std::size_t room, const char* format, const std::tm* time) {
  tests::Clock& clock = tests::TheClock();
  clock.room = room;
  clock.format = format;
  if (!clock.has_text) {
    return 0;
  }
  const auto padded = [](int number, std::size_t digits) {
    const std::string bare = std::to_string(number);
    return std::string(digits - std::min(digits, bare.size()), '0') + bare;
  };
  const std::string stamp = padded(time->tm_year + 1900, 4) + "-" + padded(time->tm_mon + 1, 2) + "-" +
                            padded(time->tm_mday, 2) + " " + padded(time->tm_hour, 2) + ":" + padded(time->tm_min, 2) +
                            ":" + padded(time->tm_sec, 2);
  std::memcpy(text, stamp.c_str(), stamp.size() + 1);
  return stamp.size();
}

}  // extern "C"
