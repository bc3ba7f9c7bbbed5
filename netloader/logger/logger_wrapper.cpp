#include "netloader/logger/logger_wrapper.h"

#include <string>

#include "netloader/logger/global_logger.h"

namespace netloader::logger {

LoggerWrapper::LoggerWrapper(LogLevel lineLevel) : level(lineLevel) {}

LoggerWrapper::~LoggerWrapper() {
  stream.flush();
  ILogger* logger = GetLogger();
  const std::string line = stream.str();
  logger->Trace(level, line.c_str());
}

}  // namespace netloader::logger
