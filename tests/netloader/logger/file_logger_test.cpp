#include "netloader/logger/file_logger.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <typeinfo>

#include "tests/foundation/open_files.h"
#include "tests/netloader/logger/log_file.h"
#include "tests/support/temp_folder.h"
#include "tests/support/without_reading_everything.h"

namespace netloader::logger {
namespace {

namespace fs = std::filesystem;
using tests::FirstLine;
using tests::LogText;
using tests::OpenFiles;
using tests::ReadFile;
using tests::TempFolder;
using tests::WriteFile;
using tov::WideString;

static_assert(std::is_base_of_v<ILogger, FileLogger>);

FileLogger LoggerIn(const fs::path& folder) {
  return FileLogger(folder.u16string(), u"log");
}

std::string NumberedName(unsigned attempt) {
  return attempt == 0 ? "log.log" : "log(" + std::to_string(attempt) + ").log";
}

TEST(FileLogger, BeginsWithALineThatNamesItsFile) {
  const TempFolder folder;

  FileLogger logger = LoggerIn(folder.Path());

  EXPECT_TRUE(logger.IsValid());
  EXPECT_EQ(LogText(folder / "log.log"), FirstLine(folder / "log.log"));
}

TEST(FileLogger, ALineIsTimeTabLevelTabMessage) {
  const TempFolder folder;
  FileLogger logger = LoggerIn(folder.Path());

  logger.Trace(LogLevel::TRACE, "progress");
  logger.Trace(LogLevel::ERROR, "reason");
  logger.Trace(LogLevel::INFRA, "");

  EXPECT_EQ(LogText(folder / "log.log"),
            FirstLine(folder / "log.log") + "TIME\tTRACE\tprogress\nTIME\tERROR\treason\nTIME\tINFRA\t\n");
}

TEST(FileLogger, EveryOtherLevelIsUnknown) {
  const TempFolder folder;
  FileLogger logger = LoggerIn(folder.Path());

  for (const unsigned level : {3U, 5U, 7U, 255U, 256U, 0x80000000U, 0xFFFFFFFFU}) {
    logger.Trace(static_cast<LogLevel>(level), "x");
  }

  std::string expected = FirstLine(folder / "log.log");
  for (int i = 0; i < 7; ++i) {
    expected += "TIME\tUNKN\tx\n";
  }
  EXPECT_EQ(LogText(folder / "log.log"), expected);
}

TEST(FileLogger, AMessageIsWrittenByteForByteLineEndsIncluded) {
  const TempFolder folder;
  FileLogger logger = LoggerIn(folder.Path());

  logger.Trace(LogLevel::TRACE, "one\ntwo\r\n\tthree \xFF\xC3\xA9\n");

  EXPECT_EQ(LogText(folder / "log.log"),
            FirstLine(folder / "log.log") + "TIME\tTRACE\tone\ntwo\r\n\tthree \xFF\xC3\xA9\n\n");
}

TEST(FileLogger, ALongMessageIsWhole) {
  const TempFolder folder;
  FileLogger logger = LoggerIn(folder.Path());
  const std::string message(1'000'000, 'm');

  logger.Trace(LogLevel::TRACE, message.c_str());

  EXPECT_EQ(LogText(folder / "log.log"), FirstLine(folder / "log.log") + "TIME\tTRACE\t" + message + "\n");
}

TEST(FileLogger, ASeparatorAtTheFoldersEndIsNotDoubled) {
  const TempFolder folder;

  FileLogger logger(folder.Path().u16string() + u"/", u"log");

  EXPECT_EQ(LogText(folder / "log.log"), FirstLine(folder / "log.log"));
}

TEST(FileLogger, NamesThatAreNotAsciiBecomeUtf8) {
  const TempFolder folder;
  fs::create_directory(folder / "caf\xC3\xA9");

  FileLogger logger(folder.Path().u16string() + u"/caf\u00E9", u"\U0001F600");

  const fs::path file = folder / "caf\xC3\xA9/\xF0\x9F\x98\x80.log";
  EXPECT_EQ(LogText(file), FirstLine(file));
}

TEST(FileLogger, AnEmptyNameIsTheExtensionAlone) {
  const TempFolder folder;

  FileLogger logger(folder.Path().u16string(), u"");

  EXPECT_EQ(LogText(folder / ".log"), FirstLine(folder / ".log"));
}

TEST(FileLogger, AFolderThatIsNotAbsoluteIsAnInvalidArgument) {
  struct Row {
    WideString folder;
    std::string shown;
  };
  for (const Row& row : {Row{u"logs/x", "logs/x"}, Row{u"", ""}, Row{u" /tmp", " /tmp"},
                         Row{u"caf\u00E9", "caf\xC3\xA9"}, Row{WideString(1, char16_t{0xD800}), "\xED\xA0\x80"}}) {
    const std::size_t before = OpenFiles();
    try {
      FileLogger logger(row.folder, u"log");
      ADD_FAILURE() << row.shown;
    } catch (const std::invalid_argument& failure) {
      EXPECT_EQ(failure.what(), "Cannot use not absolute logs path: " + row.shown);
    }
    EXPECT_EQ(OpenFiles(), before) << row.shown;
  }
}

TEST(FileLogger, WhenANameCannotBeOpenedTheNextNumberIsTried) {
  for (unsigned taken = 1; taken <= 9; ++taken) {
    const TempFolder folder;
    for (unsigned attempt = 0; attempt < taken; ++attempt) {
      fs::create_directory(folder / NumberedName(attempt));
    }

    FileLogger logger = LoggerIn(folder.Path());

    EXPECT_TRUE(logger.IsValid()) << taken;
    EXPECT_EQ(LogText(folder / NumberedName(taken)), FirstLine(folder / NumberedName(taken)));
    EXPECT_FALSE(fs::exists(folder / NumberedName(taken + 1))) << taken;
  }
}

TEST(FileLogger, AfterTheNinthNumberItIsInvalidAndWritesNothing) {
  const TempFolder folder;
  for (unsigned attempt = 0; attempt <= 9; ++attempt) {
    fs::create_directory(folder / NumberedName(attempt));
  }

  FileLogger logger = LoggerIn(folder.Path());
  EXPECT_FALSE(logger.IsValid());
  logger.Trace(LogLevel::TRACE, "lost");

  EXPECT_FALSE(logger.IsValid());
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 10);
}

TEST(FileLogger, AnInvalidLoggerNeverTriesAgain) {
  const TempFolder folder;
  FileLogger logger = LoggerIn(folder / "missing");
  fs::create_directory(folder / "missing");

  logger.Trace(LogLevel::TRACE, "lost");

  EXPECT_FALSE(logger.IsValid());
  EXPECT_TRUE(fs::is_empty(folder / "missing"));
}

TEST(FileLogger, AMissingFolderIsNotCreated) {
  const TempFolder folder;

  FileLogger logger = LoggerIn(folder / "missing");

  EXPECT_FALSE(logger.IsValid());
  EXPECT_FALSE(fs::exists(folder / "missing"));
}

TEST(FileLogger, AFileThatMayNotBeWrittenIsPassedOver) {
  const TempFolder folder;
  WriteFile(folder / "log.log", "someone's");
  fs::permissions(folder / "log.log", fs::perms::owner_read);
  const tests::WithoutReadingEverything rights;

  FileLogger logger = LoggerIn(folder.Path());

  EXPECT_EQ(ReadFile(folder / "log.log"), "someone's");
  EXPECT_EQ(LogText(folder / "log(1).log"), FirstLine(folder / "log(1).log"));
}

TEST(FileLogger, AnExistingFileIsEmptiedFirst) {
  const TempFolder folder;
  WriteFile(folder / "log.log", std::string(10'000, 'x'));

  FileLogger logger = LoggerIn(folder.Path());

  EXPECT_EQ(LogText(folder / "log.log"), FirstLine(folder / "log.log"));
}

TEST(FileLogger, ANullTextEndsTheLineAndSilencesTheLoggerWhichStaysValid) {
  const TempFolder folder;
  FileLogger logger = LoggerIn(folder.Path());
  logger.Trace(LogLevel::TRACE, "before");

  logger.Trace(LogLevel::ERROR, nullptr);
  logger.Trace(LogLevel::TRACE, "lost");

  EXPECT_TRUE(logger.IsValid());
  EXPECT_EQ(ReadFile(folder / "log.log").find("lost"), std::string::npos);
  EXPECT_TRUE(LogText(folder / "log.log").starts_with(FirstLine(folder / "log.log") + "TIME\tTRACE\tbefore\n"));
}

TEST(FileLogger, APathWithoutAUtf8FormIsABadCastAndLeavesAnEmptyFile) {
  const TempFolder folder;
  const std::size_t before = OpenFiles();

  EXPECT_THROW(FileLogger(folder.Path().u16string(), WideString{u'a', char16_t{0xD800}}), std::bad_cast);

  EXPECT_EQ(ReadFile(folder / "a\xED\xA0\x80.log"), "");
  EXPECT_EQ(OpenFiles(), before);
}

TEST(FileLogger, AFullDiskLosesLinesAndNothingElse) {
  const TempFolder folder;
  fs::create_symlink("/dev/full", folder / "log.log");

  FileLogger logger = LoggerIn(folder.Path());
  logger.Trace(LogLevel::TRACE, "lost");

  EXPECT_TRUE(logger.IsValid());
}

TEST(FileLogger, TheFileIsClosedWithTheLogger) {
  const TempFolder folder;
  const std::size_t before = OpenFiles();
  auto logger = std::make_unique<FileLogger>(folder.Path().u16string(), u"log");
  EXPECT_EQ(OpenFiles(), before + 1);

  logger.reset();

  EXPECT_EQ(OpenFiles(), before);
}

}  // namespace
}  // namespace netloader::logger
