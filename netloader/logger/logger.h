// What a logger is, and the one that discards everything.
#pragma once

#include <cstdint>

#include "foundation/strings.h"

namespace netloader::logger {

enum class LogLevel : std::uint32_t { TRACE = 0, ERROR = 1, INFRA = 2 };

/// Takes finished lines. No implementation reports a failure to its caller.
class ILogger {
 public:
  ILogger() = default;
  ILogger(const ILogger&) = delete;
  ILogger& operator=(const ILogger&) = delete;
  virtual ~ILogger();

  /// True while lines can be written.
  virtual bool IsValid() = 0;

  /// Takes one line: NUL-terminated UTF-8 without a newline at its end.
  virtual void Trace(LogLevel level, const char* text) = 0;
};

/// Discards every line. Always valid.
class EmptyLogger : public ILogger {
 public:
  ~EmptyLogger() override;
  bool IsValid() override;
  void Trace(LogLevel level, const char* text) override;
};

/// Where a file logger writes.
struct LoggerSettings {
  tov::WideString logsDir;  ///< The log file's folder, absolute.
  tov::WideString logName;  ///< The log file's name without its extension.
};

}  // namespace netloader::logger
