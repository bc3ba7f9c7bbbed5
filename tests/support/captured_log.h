// The lines that code under test logs.
#pragma once

#include <string>
#include <vector>

#include "tests/support/temp_folder.h"

namespace tests {

/// Installs a file logger of its own while it lives. Throws when another logger keeps the slot, as the shared empty
/// logger does for the rest of a process in which it was once installed.
class CapturedLog {
 public:
  CapturedLog();
  ~CapturedLog();
  CapturedLog(const CapturedLog&) = delete;
  CapturedLog& operator=(const CapturedLog&) = delete;

  /// Every line since, as "LEVEL\tmessage"; the time stamps and the logger's own first line are left out. What follows
  /// a line end inside a message is a line of its own, as it stands.
  [[nodiscard]] std::vector<std::string> Lines() const;

 private:
  TempFolder folder_;
};

}  // namespace tests
