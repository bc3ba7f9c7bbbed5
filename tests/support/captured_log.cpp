#include "tests/support/captured_log.h"

#include <regex>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "netloader/logger/global_logger.h"

namespace tests {

using netloader::logger::GetLogger;
using netloader::logger::InitGlobalFileLogger;
using netloader::logger::IsEmptyLoggerCurrent;
using netloader::logger::ReleaseGlobalFileLogger;

CapturedLog::CapturedLog() {
  const auto* before = GetLogger();
  InitGlobalFileLogger({folder_.Path().u16string(), u"log"});
  if (GetLogger() == before) {
    throw std::logic_error("another logger is installed already and cannot be replaced");
  }
}

// The slot may hold the shared empty logger by now, which nobody may destroy.
CapturedLog::~CapturedLog() {
  if (!IsEmptyLoggerCurrent()) {
    ReleaseGlobalFileLogger();
  }
}

std::vector<std::string> CapturedLog::Lines() const {
  const std::regex time_stamp(R"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\t)");
  std::vector<std::string> lines;
  std::istringstream stream(ReadFile(folder_ / "log.log"));
  std::string line;
  std::getline(stream, line);  // The logger's own: that it has been created.
  while (std::getline(stream, line)) {
    const bool stamped = std::regex_search(line.substr(0, 20), time_stamp);
    lines.push_back(stamped ? line.substr(20) : line);
  }
  return lines;
}

}  // namespace tests
