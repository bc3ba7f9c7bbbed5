#include "netloader/netloaderquorcommon/src/dotnet_settings.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "foundation/result_code.h"
#include "foundation/result_code_exception.h"
#include "netloader/netloaderquorcommon/src/dotnet_settings_provider.h"
#include "tests/netloader/netloaderquorcommon/src/interposed_readlink.h"
#include "tests/support/captured_log.h"
#include "tests/support/settings_file.h"

// Every test runs in a process of its own: the settings are read once.
namespace netloader::quor {
namespace {

using namespace std::string_literals;
using tov::WideString;
using Lines = std::vector<std::string>;

const std::string kPath(tests::kSettingsPath);
constexpr const char* kStartLine = "TRACE\tTryInitNetloaderSettings: Start initializing dotnet settings";
constexpr const char* kLoadedAlreadyLine = "TRACE\tLoadSettingsFromFile: settings already loaded";
const std::string kLoadedFromLine = "TRACE\tSettings loaded from '" + kPath + "'";
constexpr const char* kNoRootLine = "ERROR\tTryInitNetloaderSettingsImpl: Failed to get dotnet root path from file";
constexpr const char* kSetLine = "TRACE\tTryInitNetloaderSettings: dotnet settings set";
constexpr const char* kFailedLine = "TRACE\tTryInitNetloaderSettings: loading dotnet settings failed";

WideString OwnFolder() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path().u16string();
}

TEST(LoaderSettings, AreTheRootOfTheFileTheFixedPrefixAndTheExecutablesFolder) {
  const tests::SettingsFile file("DotnetRootFolder=/usr/share/dotnet\n");
  DotnetSettingsProvider::GetInstance();
  const WideString folder = OwnFolder();
  const tests::CapturedLog log;
  HostFxrModuleParameters parameters;

  EXPECT_TRUE(TryInitNetloaderSettings(parameters));

  EXPECT_EQ(parameters.dotnetRootPath, u"/usr/share/dotnet");
  EXPECT_EQ(parameters.dotnetVersionPrefix, u"6.0.");
  EXPECT_EQ(parameters.productRoot, folder);
  EXPECT_TRUE(parameters.environmentVariables.empty());
  EXPECT_EQ(log.Lines(),
            (Lines{kStartLine, kLoadedAlreadyLine, kLoadedFromLine,
                   "TRACE\tTryInitNetloaderSettingsImpl: using dotnet root path = '/usr/share/dotnet'", kSetLine}));
}

TEST(LoaderSettings, ReadTheFileWhenNobodyHas) {
  const tests::SettingsFile file("DotnetRootFolder=/d\n");
  const tests::CapturedLog log;
  HostFxrModuleParameters parameters;

  EXPECT_TRUE(TryInitNetloaderSettings(parameters));

  EXPECT_EQ(log.Lines(), (Lines{kStartLine, "TRACE\tLoadSettingsFromFile: process line 'DotnetRootFolder=/d'",
                                "TRACE\tLoadSettingsFromFile: key = 'DotnetRootFolder', value = '/d'",
                                "TRACE\tLoadSettingsFromFile: settings loaded", kLoadedFromLine,
                                "TRACE\tTryInitNetloaderSettingsImpl: using dotnet root path = '/d'", kSetLine}));
}

TEST(LoaderSettings, WithoutARootTheyFailAndNothingElseIsWritten) {
  const tests::SettingsFile file("ProductRootDir=/p\n");
  DotnetSettingsProvider::GetInstance();
  const tests::CapturedLog log;
  HostFxrModuleParameters parameters{u"", u"before", u"before", {}};

  EXPECT_FALSE(TryInitNetloaderSettings(parameters));

  EXPECT_EQ(log.Lines(), (Lines{kStartLine, kLoadedAlreadyLine, kLoadedFromLine, kNoRootLine, kFailedLine}));
  EXPECT_EQ(parameters.dotnetRootPath, u"");
  EXPECT_EQ(parameters.dotnetVersionPrefix, u"before");
  EXPECT_EQ(parameters.productRoot, u"before");
}

TEST(LoaderSettings, AnEmptyRootIsNoRoot) {
  const tests::SettingsFile file("DotnetRootFolder=\n");
  DotnetSettingsProvider::GetInstance();
  const tests::CapturedLog log;
  HostFxrModuleParameters parameters;

  EXPECT_FALSE(TryInitNetloaderSettingsImpl(parameters));

  EXPECT_EQ(log.Lines(), (Lines{kLoadedAlreadyLine, kLoadedFromLine, kNoRootLine}));
}

TEST(LoaderSettings, ARootThatTheCallerGaveIsKeptWhenTheFileHasNone) {
  for (const bool outer : {true, false}) {
    SCOPED_TRACE(outer);
    const tests::SettingsFile file("");
    DotnetSettingsProvider::GetInstance();
    const tests::CapturedLog log;
    HostFxrModuleParameters parameters{u"/mine", u"", u"", {}};

    EXPECT_TRUE(outer ? TryInitNetloaderSettings(parameters) : TryInitNetloaderSettingsImpl(parameters));

    EXPECT_EQ(parameters.dotnetRootPath, u"/mine");
    EXPECT_EQ(parameters.dotnetVersionPrefix, u"6.0.");
    EXPECT_EQ(log.Lines(), outer ? (Lines{kStartLine, kLoadedAlreadyLine, kLoadedFromLine, kSetLine})
                                 : (Lines{kLoadedAlreadyLine, kLoadedFromLine}));
  }
}

TEST(LoaderSettings, TheRootOfTheFileReplacesTheCallers) {
  const tests::SettingsFile file("DotnetRootFolder=/d\n");
  HostFxrModuleParameters parameters{u"/mine", u"", u"", {{u"k", u"v"}}};

  EXPECT_TRUE(TryInitNetloaderSettings(parameters));

  EXPECT_EQ(parameters.dotnetRootPath, u"/d");
  EXPECT_EQ(parameters.environmentVariables.at(u"k"), u"v");
}

TEST(LoaderSettings, TakingTheRootSaysWhetherThereIsOneToTake) {
  const tests::SettingsFile file("LoaderLoggingDir=/logs\n");
  DotnetSettingsProvider provider;
  provider.LoadSettingsFromFile();
  HostFxrModuleParameters parameters;
  parameters.dotnetRootPath = u"/the/callers";

  EXPECT_FALSE(detail::TakeRoot(provider, parameters));
  EXPECT_EQ(parameters.dotnetRootPath, u"/the/callers");

  provider.Replace(detail::SettingsKey::kDotnetRootFolder, u"/another");
  EXPECT_TRUE(detail::TakeRoot(provider, parameters));
  EXPECT_EQ(parameters.dotnetRootPath, u"/another");
}

TEST(LoaderSettings, ACarriageReturnStaysInTheRootOnPurpose) {
  const tests::SettingsFile file("DotnetRootFolder=/d\r\n");
  const tests::CapturedLog log;
  HostFxrModuleParameters parameters;

  EXPECT_TRUE(TryInitNetloaderSettings(parameters));

  EXPECT_EQ(parameters.dotnetRootPath, u"/d\r");
  EXPECT_EQ(*(log.Lines().end() - 2), "TRACE\tTryInitNetloaderSettingsImpl: using dotnet root path = '/d\r'");
}

TEST(LoaderSettings, ANulCutsTheRootAndItsLogLineOnPurpose) {
  const tests::SettingsFile file("DotnetRootFolder=/d\0e\n"s);
  const tests::CapturedLog log;
  HostFxrModuleParameters parameters;

  EXPECT_TRUE(TryInitNetloaderSettings(parameters));

  EXPECT_EQ(parameters.dotnetRootPath, u"/d");
  EXPECT_EQ(*(log.Lines().end() - 2), "TRACE\tTryInitNetloaderSettingsImpl: using dotnet root path = '/d");
}

TEST(LoaderSettings, ARootThatBeginsWithANulIsUsedAndYetNoRoot) {
  const tests::SettingsFile file("DotnetRootFolder=\0/d\n"s);
  DotnetSettingsProvider::GetInstance();
  const tests::CapturedLog log;
  HostFxrModuleParameters parameters{u"/mine", u"", u"", {}};

  EXPECT_FALSE(TryInitNetloaderSettingsImpl(parameters));

  EXPECT_EQ(log.Lines(), (Lines{kLoadedAlreadyLine, kLoadedFromLine,
                                "TRACE\tTryInitNetloaderSettingsImpl: using dotnet root path = '", kNoRootLine}));
}

TEST(LoaderSettings, WhatLoadingTheFileThrowsPasses) {
  const tests::CapturedLog log;
  HostFxrModuleParameters parameters{u"/mine", u"", u"", {}};

  EXPECT_THROW(TryInitNetloaderSettings(parameters), std::system_error);

  EXPECT_EQ(log.Lines(),
            (Lines{kStartLine, "ERROR\tLoadSettingsFromFile: Failed to open file by path '" + kPath + "'"}));
}

TEST(LoaderSettings, TheProductsRootIsTheFolderOfTheExecutable) {
  const tests::SettingsFile file("DotnetRootFolder=/d\n");
  struct Row {
    std::string link;
    WideString folder;
  };
  for (const auto& [link, folder] : std::to_array<Row>({
           {"/opt/morvath/quor/bin/grellin", u"/opt/morvath/quor/bin"},
           {"/grellin", u"/"},
           {"/bin//grellin", u"/bin/"},
           {"grellin", u""},
       })) {
    SCOPED_TRACE(link);
    const tests::ScriptedLink scripted(link);
    HostFxrModuleParameters parameters{u"", u"", u"before", {}};

    EXPECT_TRUE(TryInitNetloaderSettings(parameters));

    EXPECT_EQ(parameters.productRoot, folder);
  }
}

TEST(LoaderSettings, AnExecutableLinkThatFailsWithoutAReasonGivesAnEmptyFolder) {
  const tests::SettingsFile file("DotnetRootFolder=/d\n");
  const tests::UnreadableLink fault(0);
  HostFxrModuleParameters parameters{u"", u"", u"before", {}};

  EXPECT_TRUE(TryInitNetloaderSettings(parameters));

  EXPECT_EQ(parameters.productRoot, u"");
}

// Expects the exception for a folder that cannot be determined, and that nothing but the root was written or logged.
void ExpectFolderFailure(int result) {
  const tests::SettingsFile file("DotnetRootFolder=/d\n");
  DotnetSettingsProvider::GetInstance();
  const tests::CapturedLog log;
  HostFxrModuleParameters parameters;
  try {
    TryInitNetloaderSettings(parameters);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const tov::CheckResultFailedException& failure) {
    EXPECT_EQ(failure.ResultCode(), result);
    EXPECT_TRUE(std::string(failure.what())
                    .starts_with("netloader/netloaderquorcommon/src/dotnet_settings(88): Expression failed."))
        << failure.what();
  }
  EXPECT_EQ(parameters.dotnetVersionPrefix, u"");
  EXPECT_EQ(parameters.productRoot, u"");
  EXPECT_EQ(log.Lines(), (Lines{kStartLine, kLoadedAlreadyLine, kLoadedFromLine,
                                "TRACE\tTryInitNetloaderSettingsImpl: using dotnet root path = '/d'"}));
}

TEST(LoaderSettings, AnExecutableLinkThatCannotBeReadThrowsItsResultCode) {
  const tests::UnreadableLink fault(EACCES);
  ExpectFolderFailure(tov::posix::ResultCodeFromSystemError(EACCES));
}

TEST(LoaderSettings, AnExecutableLinkOf4096BytesThrowsAnUnspecifiedError) {
  const tests::ScriptedLink scripted("/" + std::string(4095, 'x'));
  ExpectFolderFailure(tov::result_code::FromBits(0x8000004B));
}

TEST(LoaderSettings, AnExecutableFolderThatIsNotUtf8ThrowsAnInvalidArgument) {
  const tests::ScriptedLink scripted("/\xff/grellin");
  ExpectFolderFailure(tov::result_code::FromBits(0x80000046));
}

}  // namespace
}  // namespace netloader::quor
