// Where the log would go. The settings are read once, so every test runs in a process of its own.
#include <gtest/gtest.h>

#include <string>
#include <system_error>
#include <vector>

#include "netloader/netloaderquorcommon/src/dotnet_settings.h"
#include "netloader/netloaderquorcommon/src/dotnet_settings_provider.h"
#include "tests/support/captured_log.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/settings_file.h"

namespace netloader::quor {
namespace {

using namespace std::string_literals;
using logger::LoggerSettings;
using Lines = std::vector<std::string>;

const std::string kPath(tests::kSettingsPath);
constexpr const char* kStartLine =
    "TRACE\tInitNetloaderLoggingSettingsOrUseDefault: Start initializing logging settings";
constexpr const char* kLoadedAlreadyLine = "TRACE\tLoadSettingsFromFile: settings already loaded";
const std::string kLoadedFromLine = "TRACE\tSettings loaded from '" + kPath + "'";
constexpr const char* kNoFolderLine =
    "ERROR\tTryInitNetloaderLoggingSettingsImpl: Failed to get logger folder path from file";
constexpr const char* kSetLine = "TRACE\tInitNetloaderLoggingSettingsOrUseDefault: logging settings set";

std::string UsingLine(const std::string& folder) {
  return "TRACE\tTryInitNetloaderLoggingSettingsImpl: using logs dir path = '" + folder;
}

TEST(LoggingSettings, AreTheFolderOfTheFileAndTheFixedName) {
  const tests::SettingsFile file("LoaderLoggingDir=/var/log/q\n");
  const tests::CapturedLog log;
  LoggerSettings settings;

  InitNetloaderLoggingSettingsOrUseDefault(settings);

  EXPECT_EQ(settings.logsDir, u"/var/log/q");
  EXPECT_EQ(settings.logName, u"netloader_quor_common");
  EXPECT_EQ(log.Lines(), (Lines{kStartLine, "TRACE\tLoadSettingsFromFile: process line 'LoaderLoggingDir=/var/log/q'",
                                "TRACE\tLoadSettingsFromFile: key = 'LoaderLoggingDir', value = '/var/log/q'",
                                "TRACE\tLoadSettingsFromFile: settings loaded", kLoadedFromLine,
                                UsingLine("/var/log/q'"), kSetLine}));
}

TEST(LoggingSettings, AFolderOfTheFileWinsOverTheTemporaryOne) {
  const tests::SettingsFile file("LoaderLoggingDir=/var/log/q\n");
  tests::ScopedEnvironment environment;
  environment.Set("TMP", "/t");
  LoggerSettings settings;

  InitNetloaderLoggingSettingsOrUseDefault(settings);

  EXPECT_EQ(settings.logsDir, u"/var/log/q");
}

// Expects the default with a file that names no folder.
void ExpectDefault(const char* bytes) {
  const tests::SettingsFile file(bytes);
  DotnetSettingsProvider::GetInstance();
  const tests::CapturedLog log;
  tests::ScopedEnvironment environment;
  environment.Remove("TMP").Set("TEMP", "/scratch");
  LoggerSettings settings;

  InitNetloaderLoggingSettingsOrUseDefault(settings);

  EXPECT_EQ(settings.logsDir, u"/scratch");
  EXPECT_EQ(settings.logName, u"netloader_quor_common");
  EXPECT_EQ(log.Lines(), (Lines{kStartLine, kLoadedAlreadyLine, kLoadedFromLine, kNoFolderLine, kSetLine}));
}

TEST(LoggingSettings, WithoutAFolderTheErrorIsLoggedBeforeTheDefaultIsUsed) {
  ExpectDefault("");
}

TEST(LoggingSettings, WithAnEmptyFolderTheDefaultIsUsed) {
  ExpectDefault("LoaderLoggingDir=\n");
}

TEST(LoggingSettings, WithAFolderUnderAnotherCaseOfTheKeyTheDefaultIsUsed) {
  ExpectDefault("loaderloggingdir=/x\n");
}

TEST(LoggingSettings, AnEmptyFolderInTheFileIsNone) {
  const tests::SettingsFile file("LoaderLoggingDir=\n");
  LoggerSettings settings;

  EXPECT_FALSE(TryInitNetloaderLoggingSettingsImpl(settings));
}

TEST(LoggingSettings, WithoutAFolderTheInnerFunctionLeavesTheRecordAlone) {
  const tests::SettingsFile file("");
  LoggerSettings settings{u"before", u"before"};

  EXPECT_FALSE(TryInitNetloaderLoggingSettingsImpl(settings));

  EXPECT_EQ(settings.logsDir, u"before");
  EXPECT_EQ(settings.logName, u"before");
}

TEST(LoggingSettings, ACarriageReturnStaysInTheFolderOnPurpose) {
  const tests::SettingsFile file("LoaderLoggingDir=/tmp/l\r\n");
  LoggerSettings settings;

  EXPECT_TRUE(TryInitNetloaderLoggingSettingsImpl(settings));

  EXPECT_EQ(settings.logsDir, u"/tmp/l\r");
}

TEST(LoggingSettings, ANulCutsTheFolderAndItsLogLineOnPurpose) {
  const tests::SettingsFile file("LoaderLoggingDir=/l\0m\n"s);
  const tests::CapturedLog log;
  LoggerSettings settings;

  EXPECT_TRUE(TryInitNetloaderLoggingSettingsImpl(settings));

  EXPECT_EQ(settings.logsDir, u"/l");
  EXPECT_EQ(settings.logName, u"netloader_quor_common");
  EXPECT_EQ(log.Lines().back(), UsingLine("/l"));
}

TEST(LoggingSettings, AFolderThatBeginsWithANulIsEmptyAndLeavesTheNameAlone) {
  const tests::SettingsFile file("LoaderLoggingDir=\0/l\n"s);
  LoggerSettings settings{u"before", u"before"};

  InitNetloaderLoggingSettingsOrUseDefault(settings);

  EXPECT_EQ(settings.logsDir, u"");
  EXPECT_EQ(settings.logName, u"before");
}

TEST(LoggingSettings, WhatLoadingTheFileThrowsPassesAndNoDefaultIsApplied) {
  const tests::CapturedLog log;
  LoggerSettings settings{u"before", u"before"};

  EXPECT_THROW(InitNetloaderLoggingSettingsOrUseDefault(settings), std::system_error);

  EXPECT_EQ(settings.logsDir, u"before");
  EXPECT_EQ(settings.logName, u"before");
  EXPECT_EQ(log.Lines(),
            (Lines{kStartLine, "ERROR\tLoadSettingsFromFile: Failed to open file by path '" + kPath + "'"}));
}

tov::WideString DefaultLogFolder() {
  LoggerSettings settings;
  detail::UseDefaultLog(settings);
  return settings.logsDir;
}

TEST(DefaultLogFolder, IsTmpBeforeTempBeforeTheFixedOne) {
  tests::ScopedEnvironment environment;

  environment.Set("TMP", "/t").Set("TEMP", "/scratch");
  EXPECT_EQ(DefaultLogFolder(), u"/t");
  environment.Remove("TMP");
  EXPECT_EQ(DefaultLogFolder(), u"/scratch");
  environment.Remove("TEMP").Set("TMPDIR", "/other");
  EXPECT_EQ(DefaultLogFolder(), u"/tmp");
}

TEST(DefaultLogFolder, AnEmptyTmpHidesTempOnPurpose) {
  tests::ScopedEnvironment environment;
  environment.Set("TMP", "").Set("TEMP", "/scratch");

  EXPECT_EQ(DefaultLogFolder(), u"");
}

TEST(DefaultLogFolder, AnEmptyTempHidesTheFixedFolderOnPurpose) {
  tests::ScopedEnvironment environment;
  environment.Remove("TMP").Set("TEMP", "");

  EXPECT_EQ(DefaultLogFolder(), u"");
}

TEST(DefaultLogFolder, BytesThatAreNotUtf8GiveAnEmptyFolderInSilence) {
  const tests::CapturedLog log;
  tests::ScopedEnvironment environment;
  environment.Set("TMP", "/t/\xff").Set("TEMP", "/scratch");

  EXPECT_EQ(DefaultLogFolder(), u"");
  EXPECT_TRUE(log.Lines().empty());
}

TEST(DefaultLogFolder, IsConvertedFromUtf8) {
  tests::ScopedEnvironment environment;
  environment.Set("TMP", "/\xe2\x82\xac\xf0\x9f\x98\x80");

  EXPECT_EQ(DefaultLogFolder(), u"/\u20ac\U0001F600");
}

}  // namespace
}  // namespace netloader::quor
