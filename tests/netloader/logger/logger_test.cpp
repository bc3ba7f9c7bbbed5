#include "netloader/logger/logger.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>

#include "tests/support/virtual_slot.h"

namespace netloader::logger {
namespace {

static_assert(std::is_same_v<std::underlying_type_t<LogLevel>, std::uint32_t>);
static_assert(std::is_abstract_v<ILogger> && std::has_virtual_destructor_v<ILogger>);
static_assert(std::is_base_of_v<ILogger, EmptyLogger>);

TEST(Logger, TheLevelsHaveTheirNumbers) {
  EXPECT_EQ(static_cast<std::uint32_t>(LogLevel::TRACE), 0U);
  EXPECT_EQ(static_cast<std::uint32_t>(LogLevel::ERROR), 1U);
  EXPECT_EQ(static_cast<std::uint32_t>(LogLevel::INFRA), 2U);
}

TEST(Logger, TheOperationsStandInTheTableInThisOrderBehindTheDestructor) {
  EXPECT_EQ(tests::VirtualSlot(&ILogger::IsValid), 2);
  EXPECT_EQ(tests::VirtualSlot(&ILogger::Trace), 3);
}

TEST(Logger, TheEmptyLoggerIsAlwaysValidAndTakesAnything) {
  EmptyLogger logger;

  logger.Trace(LogLevel::ERROR, "text");
  logger.Trace(static_cast<LogLevel>(99), nullptr);

  EXPECT_TRUE(logger.IsValid());
}

TEST(Logger, TheSettingsAreFolderAndName) {
  const LoggerSettings settings{u"/folder", u"name"};

  EXPECT_EQ(settings.logsDir, u"/folder");
  EXPECT_EQ(settings.logName, u"name");
}

}  // namespace
}  // namespace netloader::logger
