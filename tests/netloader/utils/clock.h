// The calls that make a time stamp. A program that links this has its own.
#pragma once

#include <ctime>
#include <string>

namespace tests {

/// What the program's own localtime_r and strftime do.
struct Clock {
  bool has_local_time = true;
  bool has_text = true;
  std::tm local{};  ///< What localtime_r answers.

  // What strftime was last called with.
  std::size_t room = 0;
  std::string format;
};

/// The program's clock.
Clock& TheClock();

/// The clock shows 2024-03-01 13:05:09 until this goes.
class ScopedClock {
 public:
  ScopedClock();
  ~ScopedClock();
  ScopedClock(const ScopedClock&) = delete;
  ScopedClock& operator=(const ScopedClock&) = delete;
};

}  // namespace tests
