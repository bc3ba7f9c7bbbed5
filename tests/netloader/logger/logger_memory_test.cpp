#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <string>

#include "netloader/logger/file_logger.h"
#include "netloader/logger/global_logger.h"
#include "netloader/logger/log.h"
#include "netloader/logger/logger_wrapper.h"
#include "tests/foundation/failing_memory.h"
#include "tests/foundation/open_files.h"
#include "tests/netloader/logger/log_file.h"
#include "tests/support/temp_folder.h"

namespace netloader::logger {
namespace {

using tests::AllocationsAlive;
using tests::AllocationsMade;
using tests::FailingMemory;
using tests::FirstLine;
using tests::LogText;
using tests::OpenFiles;
using tests::TempFolder;

TEST(LoggerMemory, ALoggerThatCannotBeMadeLeavesTheSlotAsItWasAndNothingBehind) {
  bool failed = true;
  for (std::size_t successes = 0; failed; ++successes) {
    const TempFolder folder;
    const LoggerSettings settings{folder.Path().u16string(), u"a name that is too long to be kept inside a string"};
    ILogger* const empty = GetLogger();
    const std::size_t files = OpenFiles();
    const std::size_t before = AllocationsAlive();
    {
      const FailingMemory memory(successes);
      InitGlobalFileLogger(settings);
      failed = memory.HasFailed();
    }

    // A first line that is lost for want of memory is not a reason to be without a logger.
    if (GetLogger() == empty) {
      EXPECT_EQ(AllocationsAlive(), before) << "allocation " << successes;
      EXPECT_EQ(OpenFiles(), files) << "allocation " << successes;
    } else {
      EXPECT_TRUE(GetLogger()->IsValid()) << "allocation " << successes;
      ReleaseGlobalFileLogger();
    }
    ASSERT_LT(successes, 100U);
  }
}

TEST(LoggerMemory, ALineThatCannotBeWrittenForWantOfMemoryIsLostAndTheNextIsWritten) {
  const TempFolder folder;
  FileLogger logger(folder.Path().u16string(), u"log");
  bool failed = false;

  {
    const FailingMemory memory(0);
    logger.Trace(LogLevel::TRACE, "lost");
    failed = memory.HasFailed();
  }
  logger.Trace(LogLevel::TRACE, "written");

  EXPECT_TRUE(failed);
  EXPECT_EQ(LogText(folder / "log.log"), FirstLine(folder / "log.log") + "TIME\tTRACE\twritten\n");
}

TEST(LoggerMemory, AnExceptionAtTheEndOfALineEndsTheProcess) {
  const auto end = [] {
    auto line = std::make_unique<LoggerWrapper>(LogLevel::TRACE);
    line->stream << std::string(1000, 'x');
    const FailingMemory memory(0);
    line.reset();
  };

  EXPECT_EXIT(end(), testing::KilledBySignal(SIGABRT), "terminate called");
}

TEST(LoggerMemory, WithTheEmptyLoggerALineTakesNoMemory) {
  const tov::WideString path(1000, u'p');
  const std::size_t before = AllocationsMade();

  Log(LogLevel::ERROR, L"LoaderModule: Loading library: '", path, L"'", 42);

  EXPECT_EQ(AllocationsMade(), before);
}

TEST(LoggerMemory, ReleasingFreesTheLogger) {
  const TempFolder folder;
  const LoggerSettings settings{folder.Path().u16string(), u"log"};
  const std::size_t before = AllocationsAlive();
  InitGlobalFileLogger(settings);
  EXPECT_GT(AllocationsAlive(), before);

  ReleaseGlobalFileLogger();

  EXPECT_EQ(AllocationsAlive(), before);
}

}  // namespace
}  // namespace netloader::logger
