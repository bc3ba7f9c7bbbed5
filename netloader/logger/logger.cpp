#include "netloader/logger/logger.h"

namespace netloader::logger {

ILogger::~ILogger() = default;

EmptyLogger::~EmptyLogger() = default;

bool EmptyLogger::IsValid() {
  return true;
}

void EmptyLogger::Trace(LogLevel /*level*/, const char* /*text*/) {}

}  // namespace netloader::logger
