#include "netloader/logger/logger_wrapper.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "netloader/logger/global_logger.h"
#include "netloader/logger/wide_text_output.h"
#include "tests/support/captured_log.h"

namespace netloader::logger {
namespace {

using Lines = std::vector<std::string>;
using tests::CapturedLog;

TEST(LoggerWrapper, ALineIsWrittenWhenTheWrapperGoes) {
  const CapturedLog log;

  {
    LoggerWrapper line(LogLevel::ERROR);
    line.stream << "count: " << 3 << ", '" << std::string("x") << "'";
    EXPECT_EQ(log.Lines(), Lines());
  }

  EXPECT_EQ(log.Lines(), Lines{"ERROR\tcount: 3, 'x'"});
}

TEST(LoggerWrapper, NothingWrittenIsAnEmptyLine) {
  const CapturedLog log;

  { const LoggerWrapper line(LogLevel::TRACE); }

  EXPECT_EQ(log.Lines(), Lines{"TRACE\t"});
}

TEST(LoggerWrapper, ALevelWithoutANameIsUnknown) {
  const CapturedLog log;

  LoggerWrapper(static_cast<LogLevel>(7)).stream << "x";

  EXPECT_EQ(log.Lines(), Lines{"UNKN\tx"});
}

TEST(LoggerWrapper, AWrapperThatIsATemporaryTakesWideTextToo) {
  const CapturedLog log;

  LoggerWrapper(LogLevel::TRACE).stream << L"wide \u20ac";
  LoggerWrapper(LogLevel::TRACE).stream << std::wstring(L"string") << L" and more";
  LoggerWrapper(LogLevel::TRACE).stream << "narrow " << L"before wide";

  EXPECT_EQ(log.Lines(), (Lines{"TRACE\twide \u20ac", "TRACE\tstring and more", "TRACE\tnarrow before wide"}));
}

TEST(LoggerWrapper, ANulCutsTheLine) {
  const CapturedLog log;

  LoggerWrapper(LogLevel::TRACE).stream << std::string("shown\0hidden", 12) << " and more";

  EXPECT_EQ(log.Lines(), Lines{"TRACE\tshown"});
}

TEST(LoggerWrapper, TheLoggerIsChosenAtTheEndOfTheLine) {
  LoggerWrapper early(LogLevel::TRACE);
  early.stream << "made before the logger";
  const CapturedLog log;

  {
    LoggerWrapper moved(LogLevel::TRACE);
    moved.stream << "made with it";
  }

  EXPECT_EQ(log.Lines(), Lines{"TRACE\tmade with it"});
}

TEST(LoggerWrapper, WithoutALoggerALineHasNoEffect) {
  { LoggerWrapper(LogLevel::ERROR).stream << "lost"; }
  const CapturedLog log;

  EXPECT_EQ(log.Lines(), Lines());
}

TEST(LoggerWrapper, TheLevelStandsBeforeTheStream) {
  const LoggerWrapper line(LogLevel::TRACE);

  EXPECT_EQ(static_cast<const void*>(&line), &line.level);
  EXPECT_LT(static_cast<const void*>(&line.level), static_cast<const void*>(&line.stream));
}

TEST(LoggerWrapper, TheStreamCanBeReadBack) {
  LoggerWrapper line(LogLevel::TRACE);
  line.stream << "42";
  int number = 0;

  line.stream >> number;

  EXPECT_EQ(number, 42);
  EXPECT_EQ(line.level, LogLevel::TRACE);
}

}  // namespace
}  // namespace netloader::logger
