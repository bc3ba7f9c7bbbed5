// One log line in the making.
#pragma once

#include <sstream>

#include "netloader/logger/logger.h"

namespace netloader::logger {

/// Collects a line in `stream` and hands it to the logger that is current when the wrapper is destroyed, whatever that
/// logger's state; an empty line too. What follows a NUL in the line is lost. An exception on the way ends the process.
class LoggerWrapper {
 public:
  explicit LoggerWrapper(LogLevel lineLevel);
  LoggerWrapper(const LoggerWrapper&) = delete;
  LoggerWrapper& operator=(const LoggerWrapper&) = delete;
  ~LoggerWrapper();

  LogLevel level;
  std::stringstream stream;
};

}  // namespace netloader::logger
