// A line on a terminal that says what the report is still waited for.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "doctor/report/terminal.h"

namespace doctor {

/// Owns the last line of a terminal while there is something to wait for. What cannot be written is lost.
class WaitingLine {
 public:
  /// `descriptor` stays the caller's. `limit` is how long is waited at most.
  WaitingLine(int descriptor, const Terminal& terminal, std::chrono::milliseconds limit)
      : descriptor_(descriptor), terminal_(terminal), limit_(limit) {}

  /// Says what is waited for, raw bytes; "" takes the line away where that can be done.
  void Show(const std::string& what);

 private:
  int descriptor_;
  Terminal terminal_;
  std::chrono::milliseconds limit_;
  std::size_t columns_ = 0;  // That are to be erased.
};

}  // namespace doctor
