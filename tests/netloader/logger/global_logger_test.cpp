#include "netloader/logger/global_logger.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "netloader/logger/file_logger.h"
#include "netloader/logger/logger_wrapper.h"
#include "tests/foundation/open_files.h"
#include "tests/netloader/logger/log_file.h"
#include "tests/netloader/logger/own_process.h"
#include "tests/support/temp_folder.h"

namespace netloader::logger {
namespace {

namespace fs = std::filesystem;
using tests::FirstLine;
using tests::InOwnProcess;
using tests::LogText;
using tests::TempFolder;

LoggerSettings SettingsFor(const fs::path& folder, const char16_t* name = u"log") {
  return {folder.u16string(), name};
}

// Owns a logger that the slot dropped without destroying it.
std::unique_ptr<ILogger> Dropped(ILogger* logger) {
  return std::unique_ptr<ILogger>(logger);
}

TEST(GlobalLogger, BeforeAnythingTheEmptyLoggerIsCurrent) {
  ILogger* logger = GetLogger();

  ASSERT_NE(logger, nullptr);
  EXPECT_NE(dynamic_cast<EmptyLogger*>(logger), nullptr);
  EXPECT_EQ(GetLogger(), logger);
  EXPECT_TRUE(IsEmptyLoggerCurrent());
}

TEST(GlobalLogger, AFileLoggerIsInstalledAndReleased) {
  const TempFolder folder;
  ILogger* empty = GetLogger();

  InitGlobalFileLogger(SettingsFor(folder.Path()));
  EXPECT_NE(dynamic_cast<FileLogger*>(GetLogger()), nullptr);
  EXPECT_FALSE(IsEmptyLoggerCurrent());
  LoggerWrapper(LogLevel::ERROR).stream << "x";
  ReleaseGlobalFileLogger();

  EXPECT_EQ(GetLogger(), empty);
  EXPECT_TRUE(IsEmptyLoggerCurrent());
  EXPECT_EQ(LogText(folder / "log.log"), FirstLine(folder / "log.log") + "TIME\tERROR\tx\n");
}

TEST(GlobalLogger, ReleasingClosesTheFile) {
  const TempFolder folder;
  const std::size_t before = tests::OpenFiles();
  InitGlobalFileLogger(SettingsFor(folder.Path()));
  EXPECT_EQ(tests::OpenFiles(), before + 1);

  ReleaseGlobalFileLogger();

  EXPECT_EQ(tests::OpenFiles(), before);
}

TEST(GlobalLogger, ReleasingAnEmptySlotDoesNothing) {
  ILogger* empty = GetLogger();

  ReleaseGlobalFileLogger();
  ReleaseGlobalFileLogger();

  EXPECT_EQ(GetLogger(), empty);
  EXPECT_TRUE(empty->IsValid());
}

TEST(GlobalLogger, AValidLoggerIsKeptAndTheNewSettingsAreIgnored) {
  const TempFolder folder;
  InitGlobalFileLogger(SettingsFor(folder.Path(), u"first"));
  ILogger* first = GetLogger();

  InitGlobalFileLogger(SettingsFor(folder.Path(), u"second"));

  EXPECT_EQ(GetLogger(), first);
  EXPECT_FALSE(fs::exists(folder / "second.log"));
  ReleaseGlobalFileLogger();
}

TEST(GlobalLogger, AFileLoggerSilencedByANullTextIsKeptToo) {
  const TempFolder folder;
  InitGlobalFileLogger(SettingsFor(folder.Path(), u"first"));
  ILogger* first = GetLogger();
  first->Trace(LogLevel::TRACE, nullptr);

  InitGlobalFileLogger(SettingsFor(folder.Path(), u"second"));

  EXPECT_EQ(GetLogger(), first);
  ReleaseGlobalFileLogger();
}

TEST(GlobalLogger, ARelativeFolderReachesNoCallerAndLeavesTheSlotAsItWas) {
  ILogger* empty = GetLogger();

  InitGlobalFileLogger({u"logs/x", u"log"});
  InitGlobalFileLogger({u"", u"log"});

  EXPECT_EQ(GetLogger(), empty);
}

TEST(GlobalLogger, ANameWithoutAUtf8FormReachesNoCallerAndLeavesTheSlotAsItWas) {
  const TempFolder folder;
  const std::size_t before = tests::OpenFiles();
  ILogger* empty = GetLogger();

  InitGlobalFileLogger({folder.Path().u16string(), tov::WideString(1, char16_t{0xD800})});

  EXPECT_EQ(GetLogger(), empty);
  EXPECT_EQ(tests::OpenFiles(), before);
}

TEST(GlobalLogger, ALoggerWithoutAFileIsInstalledAndTheNextOneReplacesItWithoutDestroyingIt) {
  const TempFolder folder;
  InitGlobalFileLogger(SettingsFor(folder / "missing"));
  const auto dropped = Dropped(GetLogger());
  EXPECT_FALSE(dropped->IsValid());
  LoggerWrapper(LogLevel::ERROR).stream << "lost";

  InitGlobalFileLogger({u"relative", u"log"});
  EXPECT_EQ(GetLogger(), dropped.get());
  InitGlobalFileLogger(SettingsFor(folder.Path()));

  EXPECT_NE(GetLogger(), dropped.get());
  EXPECT_TRUE(GetLogger()->IsValid());
  EXPECT_FALSE(dropped->IsValid());
  ReleaseGlobalFileLogger();
}

TEST(GlobalLogger, AfterInitEmptyLoggerAFileLoggerIsNotInstalledOnPurpose) {
  InOwnProcess([] {
    const TempFolder folder;
    ILogger* empty = GetLogger();

    InitEmptyLogger();
    InitGlobalFileLogger(SettingsFor(folder.Path()));

    EXPECT_EQ(GetLogger(), empty);
    EXPECT_TRUE(IsEmptyLoggerCurrent());
    EXPECT_TRUE(fs::is_empty(folder.Path()));
  });
}

TEST(GlobalLogger, InitEmptyLoggerAbandonsTheLoggerThatWasThere) {
  InOwnProcess([] {
    const TempFolder folder;
    InitGlobalFileLogger(SettingsFor(folder.Path()));
    const auto dropped = Dropped(GetLogger());

    InitEmptyLogger();
    LoggerWrapper(LogLevel::ERROR).stream << "lost";
    dropped->Trace(LogLevel::ERROR, "still open");

    EXPECT_TRUE(IsEmptyLoggerCurrent());
    EXPECT_EQ(LogText(folder / "log.log"), FirstLine(folder / "log.log") + "TIME\tERROR\tstill open\n");
  });
}

TEST(GlobalLogger, OfManyThreadsThatInstallALoggerOneDoes) {
  const TempFolder folder;
  std::vector<std::thread> threads;

  for (char16_t name = u'a'; name <= u'h'; ++name) {
    threads.emplace_back([&folder, name] {
      InitGlobalFileLogger({folder.Path().u16string(), tov::WideString(1, name)});
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }

  EXPECT_TRUE(GetLogger()->IsValid());
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 1);
  ReleaseGlobalFileLogger();
}

TEST(GlobalLogger, ALineWrittenWhileTheProcessExitsDoesNoHarm) {
  struct WritesAtExit {
    ~WritesAtExit() { LoggerWrapper(LogLevel::ERROR).stream << "late"; }
  };
  InOwnProcess([] { static const WritesAtExit late; });
}

}  // namespace
}  // namespace netloader::logger
