#include "tests/support/captured_log.h"

#include <gtest/gtest.h>

#include "netloader/logger/global_logger.h"
#include "netloader/logger/log.h"

namespace tests {
namespace {

using netloader::logger::IsEmptyLoggerCurrent;
using netloader::logger::Log;
using netloader::logger::LogLevel;

TEST(CapturedLog, HoldsEveryLineWithItsLevelAndWithoutItsTime) {
  const CapturedLog log;

  Log(LogLevel::TRACE, L"one ", "two");
  Log(LogLevel::ERROR, L"three");
  Log(static_cast<LogLevel>(9), L"four\nfive");

  EXPECT_EQ(log.Lines(), (std::vector<std::string>{"TRACE\tone two", "ERROR\tthree", "UNKN\tfour", "five"}));
}

TEST(CapturedLog, LeavesTheNextOneAnEmptySlot) {
  { const CapturedLog log; }

  EXPECT_TRUE(IsEmptyLoggerCurrent());
  const CapturedLog log;
  EXPECT_TRUE(log.Lines().empty());
}

}  // namespace
}  // namespace tests
