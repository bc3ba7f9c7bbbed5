#include "netloader/logger/log.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/captured_log.h"

namespace netloader::logger {
namespace {

using Lines = std::vector<std::string>;
using tests::CapturedLog;

TEST(Log, WritesThePiecesOfALineInTheirOrderWithNothingBetween) {
  const CapturedLog log;
  const tov::WideString path = u"/opt/caf\u00E9 \U0001F600";
  const std::string bytes = "\xFF raw";

  Log(LogLevel::TRACE, L"Wide \u00E9: '", path, L"'", ", narrow: ", bytes, std::string_view("|view"), 42, "|",
      std::int64_t{-9'000'000'000});

  EXPECT_EQ(log.Lines(),
            Lines{"TRACE\tWide \xC3\xA9: '/opt/caf\xC3\xA9 \xF0\x9F\x98\x80', narrow: \xFF raw|view42|-9000000000"});
}

TEST(Log, EveryCallIsOneLineOfItsLevel) {
  const CapturedLog log;

  Log(LogLevel::TRACE, L"one");
  Log(LogLevel::ERROR, L"two");
  Log(LogLevel::INFRA, L"three");
  Log(LogLevel::ERROR);

  EXPECT_EQ(log.Lines(), (Lines{"TRACE\tone", "ERROR\ttwo", "INFRA\tthree", "ERROR\t"}));
}

TEST(Log, ANullNarrowTextEndsTheLineWhereItStands) {
  const CapturedLog log;
  const char* const null = nullptr;

  Log(LogLevel::ERROR, L"completed with error: '", null, L"'");
  Log(LogLevel::ERROR, L"the next line");

  EXPECT_EQ(log.Lines(), (Lines{"ERROR\tcompleted with error: '", "ERROR\tthe next line"}));
}

TEST(Log, ANullWideTextIsNothing) {
  const CapturedLog log;
  const wchar_t* const null = nullptr;

  Log(LogLevel::ERROR, L"a", null, L"b");

  EXPECT_EQ(log.Lines(), Lines{"ERROR\tab"});
}

TEST(Log, AWideStringThatDoesNotConvertIsWrittenAsNothing) {
  const CapturedLog log;

  Log(LogLevel::ERROR, L"'", tov::WideString(1, char16_t{0xD800}), L"'");

  EXPECT_EQ(log.Lines(), Lines{"ERROR\t''"});
}

TEST(Log, ANulCutsTheLine) {
  const CapturedLog log;

  Log(LogLevel::TRACE, L"'", std::string_view("shown\0hidden", 12), L"'");

  EXPECT_EQ(log.Lines(), Lines{"TRACE\t'shown"});
}

// A piece that no line could take shows that none is made.
TEST(Log, WithTheEmptyLoggerNoPieceIsLookedAt) {
  const std::wstring lone{0xDC00};
  ASSERT_TRUE(IsEmptyLoggerCurrent());

  Log(LogLevel::ERROR, lone.c_str());
  EXPECT_ANY_THROW(WriteLine(LogLevel::ERROR, {lone.c_str()}));
}

}  // namespace
}  // namespace netloader::logger
