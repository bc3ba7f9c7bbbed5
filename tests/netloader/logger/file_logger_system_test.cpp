#include <gtest/gtest.h>

#include "netloader/logger/file_logger.h"
#include "tests/netloader/utils/clock.h"
#include "tests/support/temp_folder.h"

namespace netloader::logger {
namespace {

using tests::ReadFile;
using tests::TempFolder;

TEST(FileLoggerSystem, LinesBeginWithTheLocalTime) {
  const TempFolder folder;
  const tests::ScopedClock clock;
  FileLogger logger(folder.Path().u16string(), u"log");

  tests::TheClock().local.tm_sec = 10;
  logger.Trace(LogLevel::ERROR, "x");

  EXPECT_EQ(ReadFile(folder / "log.log"), "2024-03-01 13:05:09\tINFRA\tLog has been created with name: " +
                                              folder.Path().string() + "/log.log\n2024-03-01 13:05:10\tERROR\tx\n");
}

TEST(FileLoggerSystem, WithoutATimeALineBeginsWithTheTab) {
  for (const bool has_local_time : {false, true}) {
    const TempFolder folder;
    const tests::ScopedClock clock;
    tests::TheClock().has_local_time = has_local_time;
    tests::TheClock().has_text = false;
    FileLogger logger(folder.Path().u16string(), u"log");

    logger.Trace(LogLevel::TRACE, "x");

    EXPECT_EQ(ReadFile(folder / "log.log"),
              "\tINFRA\tLog has been created with name: " + folder.Path().string() + "/log.log\n\tTRACE\tx\n");
  }
}

}  // namespace
}  // namespace netloader::logger
