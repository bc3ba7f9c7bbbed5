#include "netloader/logger/global_logger.h"

#include <memory>
#include <mutex>
#include <utility>

#include "netloader/logger/file_logger.h"

namespace netloader::logger {
namespace {

ILogger* globalLogger = nullptr;

// Never destroyed: lines may still be written while the process exits.
EmptyLogger* const defaultEmptyLogger = new EmptyLogger;

std::mutex loggerMutex;

}  // namespace

ILogger* GetLogger() {
  return globalLogger != nullptr ? globalLogger : defaultEmptyLogger;
}

bool IsEmptyLoggerCurrent() {
  return GetLogger() == defaultEmptyLogger;
}

void InitEmptyLogger() {
  // What was there is left alone: a line that is being written elsewhere may still use it.
  globalLogger = defaultEmptyLogger;
}

void InitGlobalFileLogger(const LoggerSettings& settings) {
  try {
    const std::lock_guard lock(loggerMutex);
    if (globalLogger != nullptr && globalLogger->IsValid()) {
      return;
    }
    globalLogger = std::make_unique<FileLogger>(settings.logsDir, settings.logName).release();
  } catch (...) {  // NOLINT(bugprone-empty-catch): logging never fails its caller.
  }
}

void ReleaseGlobalFileLogger() {
  try {
    const std::lock_guard lock(loggerMutex);
    const std::unique_ptr<ILogger> released(std::exchange(globalLogger, nullptr));
  } catch (...) {  // NOLINT(bugprone-empty-catch): a mutex that cannot be locked leaves the slot as it is.
  }
}

}  // namespace netloader::logger
