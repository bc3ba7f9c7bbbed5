#include "netloader/netloaderquorcommon/src/dotnet_settings_provider.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <ios>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>
#include <typeinfo>
#include <vector>

#include "tests/foundation/open_files.h"
#include "tests/netloader/netloaderquorcommon/src/interposed_stream.h"
#include "tests/support/captured_log.h"
#include "tests/support/settings_file.h"
#include "tests/support/temp_folder.h"
#include "tests/support/without_reading_everything.h"

namespace netloader::quor {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using tests::kSettingsPath;
using tov::WideString;
using Lines = std::vector<std::string>;

const std::string kPath(kSettingsPath);
const WideString kWidePath(kSettingsPath.begin(), kSettingsPath.end());
const std::string kOpenFailedLine = "ERROR\tLoadSettingsFromFile: Failed to open file by path '" + kPath + "'";
constexpr const char* kLoadedLine = "TRACE\tLoadSettingsFromFile: settings loaded";
constexpr const char* kLoadedAlreadyLine = "TRACE\tLoadSettingsFromFile: settings already loaded";

TEST(SettingsProvider, LogsEveryLineAndWhatItMakesOfIt) {
  const tests::CapturedLog log;
  const tests::SettingsFile file("DotnetRootFolder=/usr/share/dotnet\n\n[main]\n# comment\n=x\n#a=b\nk=\na=b=c\n");
  DotnetSettingsProvider provider;

  provider.LoadSettingsFromFile();

  EXPECT_EQ(log.Lines(), (Lines{
                             "TRACE\tLoadSettingsFromFile: process line 'DotnetRootFolder=/usr/share/dotnet'",
                             "TRACE\tLoadSettingsFromFile: key = 'DotnetRootFolder', value = '/usr/share/dotnet'",
                             "TRACE\tLoadSettingsFromFile: skip line ''",
                             "TRACE\tLoadSettingsFromFile: skip line '[main]'",
                             "TRACE\tLoadSettingsFromFile: skip line '# comment'",
                             "TRACE\tLoadSettingsFromFile: skip line '=x'",
                             "TRACE\tLoadSettingsFromFile: process line '#a=b'",
                             "TRACE\tLoadSettingsFromFile: key = '#a', value = 'b'",
                             "TRACE\tLoadSettingsFromFile: process line 'k='",
                             "TRACE\tLoadSettingsFromFile: key = 'k', value = ''",
                             "TRACE\tLoadSettingsFromFile: process line 'a=b=c'",
                             "TRACE\tLoadSettingsFromFile: key = 'a', value = 'b=c'",
                             kLoadedLine,
                         }));
  EXPECT_EQ(provider.GetValue(u"DotnetRootFolder"), u"/usr/share/dotnet");
  EXPECT_EQ(provider.GetValue(u"#a"), u"b");
  EXPECT_EQ(provider.GetValue(u"k"), u"");
  EXPECT_EQ(provider.GetValue(u"a"), u"b=c");
}

TEST(SettingsProvider, AReplacedValueCountsInThePlaceOfTheFiles) {
  const tests::SettingsFile file("DotnetRootFolder=/file\nLoaderLoggingDir=/logs\n");
  DotnetSettingsProvider provider;
  provider.LoadSettingsFromFile();

  provider.Replace(detail::SettingsKey::kDotnetRootFolder, u"/another");

  EXPECT_EQ(provider.GetValue(u"DotnetRootFolder"), u"/another");
  EXPECT_EQ(provider.GetValue(u"LoaderLoggingDir"), u"/logs");
}

TEST(SettingsProvider, AnEmptyFileLoadsAndHoldsNothing) {
  const tests::CapturedLog log;
  const tests::SettingsFile file("");
  DotnetSettingsProvider provider;

  provider.LoadSettingsFromFile();

  EXPECT_EQ(log.Lines(), Lines{kLoadedLine});
  EXPECT_EQ(provider.GetValue(u"DotnetRootFolder"), u"");
  EXPECT_EQ(provider.GetSettingsSource(), kWidePath);
}

TEST(SettingsProvider, AFolderInPlaceOfTheFileIsAnEmptyFile) {
  const tests::CapturedLog log;
  fs::create_directories(kSettingsPath);
  DotnetSettingsProvider provider;

  provider.LoadSettingsFromFile();

  fs::remove(kSettingsPath);
  EXPECT_EQ(log.Lines(), Lines{kLoadedLine});
  EXPECT_EQ(provider.GetSettingsSource(), kWidePath);
}

TEST(SettingsProvider, AFileThatMemoryDoesNotSufficeToOpenIsNotAMissingOne) {
  const tests::CapturedLog log;
  const tests::SettingsFile file("k=v\n");
  const tests::UnopenableFile fault(kPath, ENOMEM);
  DotnetSettingsProvider provider;

  EXPECT_THROW(provider.LoadSettingsFromFile(), std::bad_alloc);

  EXPECT_EQ(log.Lines(), Lines{});
  EXPECT_EQ(provider.GetSettingsSource(), u"Settings not loaded yet");
}

TEST(SettingsProvider, ALineThatMemoryDoesNotSufficeForIsNotTheEnd) {
  const tests::CapturedLog log;
  const tests::SettingsFile file("a=1\nDotnetRootFolder=/usr/share/dotnet\n");
  DotnetSettingsProvider provider;
  {
    const tests::NoMemoryForLine fault(1);

    EXPECT_THROW(provider.LoadSettingsFromFile(), std::bad_alloc);
  }

  EXPECT_EQ(log.Lines(), (Lines{"TRACE\tLoadSettingsFromFile: process line 'a=1'",
                                "TRACE\tLoadSettingsFromFile: key = 'a', value = '1'"}));
  EXPECT_EQ(provider.GetSettingsSource(), u"Settings not loaded yet");
  provider.LoadSettingsFromFile();
  EXPECT_EQ(provider.GetValue(u"DotnetRootFolder"), u"/usr/share/dotnet");
}

TEST(SettingsProvider, AFileThatCannotBeReadToItsEndIsNeverUsed) {
  for (const std::string rest : {"", "DotnetRootFolder=/usr", "x"}) {
    SCOPED_TRACE(rest);
    const tests::CapturedLog log;
    const tests::SettingsFile file("");
    const tests::BrokenFile fault(kPath, "a=1\n" + rest, EIO);
    DotnetSettingsProvider provider;
    try {
      provider.LoadSettingsFromFile();
      ADD_FAILURE() << "nothing was thrown";
    } catch (const std::system_error& failure) {
      EXPECT_EQ(failure.code(), std::error_code(std::io_errc::stream));
      EXPECT_TRUE(std::string(failure.what()).starts_with("Cannot read settings file by path: " + kPath));
    }

    EXPECT_EQ(
        log.Lines(),
        (Lines{"TRACE\tLoadSettingsFromFile: process line 'a=1'", "TRACE\tLoadSettingsFromFile: key = 'a', value = '1'",
               "ERROR\tLoadSettingsFromFile: Failed to read file by path '" + kPath + "', error 5"}));
    EXPECT_EQ(provider.GetValue(u"DotnetRootFolder"), u"");
    EXPECT_EQ(provider.GetSettingsSource(), u"Settings not loaded yet");
  }
}

TEST(SettingsProvider, TheFileIsClosedWhateverBecomesOfItsLoad) {
  const std::size_t before = tests::OpenFiles();
  for (const std::string_view bytes : {"", "k=v\n", "k=v", "k=\xff\n"}) {
    SCOPED_TRACE(bytes);
    const tests::SettingsFile file(bytes);
    DotnetSettingsProvider provider;
    try {
      provider.LoadSettingsFromFile();
    } catch (const std::bad_cast&) {
      EXPECT_EQ(provider.GetSettingsSource(), u"Settings not loaded yet");
    }

    EXPECT_EQ(tests::OpenFiles(), before);
  }
}

// What a load threw, its code's own words left out.
std::string ThrownText(DotnetSettingsProvider& provider) {
  try {
    provider.LoadSettingsFromFile();
  } catch (const std::system_error& failure) {
    EXPECT_EQ(failure.code(), std::error_code(std::io_errc::stream));
    EXPECT_EQ(failure.code().value(), 1);
    const std::string what = failure.what();
    return what.substr(0, what.find(": "s + failure.code().message()));
  }
  return "nothing was thrown";
}

TEST(SettingsProvider, AFileThatCannotBeOpenedIsLoggedAndThrown) {
  struct Row {
    const char* name;
    void (*arrange)();
  };
  for (const auto& [name, arrange] : std::to_array<Row>({
           {"no folder", [] {}},
           {"no file", [] { fs::create_directories(fs::path(kSettingsPath).parent_path()); }},
           {"a file in the folder's place", [] { tests::WriteFile(fs::path(kSettingsPath).parent_path(), "text"); }},
           {"a link to itself",
            [] {
              fs::create_directories(fs::path(kSettingsPath).parent_path());
              fs::create_symlink(kSettingsPath, kSettingsPath);
            }},
           {"a file that may not be read",
            [] {
              tests::WriteFile(kSettingsPath, "k=v\n");
              fs::permissions(kSettingsPath, fs::perms::none);
            }},
       })) {
    SCOPED_TRACE(name);
    const tests::CapturedLog log;
    arrange();
    DotnetSettingsProvider provider;
    {
      const tests::WithoutReadingEverything ordinary;

      EXPECT_EQ(ThrownText(provider), "Cannot open settings file by path: " + kPath);
    }
    fs::remove_all(fs::path(kSettingsPath).parent_path());

    EXPECT_EQ(log.Lines(), Lines{kOpenFailedLine});
    EXPECT_EQ(provider.GetSettingsSource(), u"Settings not loaded yet");
  }
}

TEST(SettingsProvider, ALinkToAFileIsFollowed) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "real.ini", "k=v\n");
  fs::create_directories(fs::path(kSettingsPath).parent_path());
  fs::create_symlink(folder / "real.ini", kSettingsPath);
  DotnetSettingsProvider provider;

  provider.LoadSettingsFromFile();

  fs::remove(kSettingsPath);
  EXPECT_EQ(provider.GetValue(u"k"), u"v");
}

struct Value {
  const char* name;
  std::string file;
  WideString key;
  WideString value;
};

TEST(SettingsProvider, KeepsEveryByteOfKeysAndValues) {
  for (const auto& [name, bytes, key, value] : std::to_array<Value>({
           {"no newline at the end", "a=b\nk=v", u"k", u"v"},
           {"blanks stay in the key", "DotnetRootFolder = /x\n", u"DotnetRootFolder", u""},
           {"and in the value", "DotnetRootFolder = /x\n", u"DotnetRootFolder ", u" /x"},
           {"another case is another key", "dotnetrootfolder=/x\n", u"DotnetRootFolder", u""},
           {"quotes stay", "k=\"v\"\n", u"k", u"\"v\""},
           {"a byte-order mark is a part of the first key", "\xef\xbb\xbfk=v\n", u"k", u""},
           {"and of no other", "\xef\xbb\xbfk=v\n", u"\ufeffk", u"v"},
           {"a NUL is a character like any other", "k=a\0b\n"s, u"k", WideString(u"a\0b", 3)},
           {"text beyond ASCII", "\xc3\xa9=\xe2\x82\xac\xf0\x9f\x98\x80\n", u"\u00e9", u"\u20ac\U0001F600"},
           {"the last of two lines counts", "DotnetRootFolder=/opt/x\na=b\nDotnetRootFolder=/opt/y\n",
            u"DotnetRootFolder", u"/opt/y"},
           {"also when it is empty", "k=v\nk=\n", u"k", u""},
           {"a very long line", "k=" + std::string(1'000'000, 'x') + "\n", u"k", WideString(1'000'000, u'x')},
       })) {
    SCOPED_TRACE(name);
    const tests::SettingsFile file(bytes);
    DotnetSettingsProvider provider;

    provider.LoadSettingsFromFile();

    EXPECT_EQ(provider.GetValue(key), value);
  }
}

TEST(SettingsProvider, ACarriageReturnStaysInAValueOnPurpose) {
  const tests::CapturedLog log;
  const tests::SettingsFile file("LoaderLoggingDir=/tmp/l\r\n\r\n");
  DotnetSettingsProvider provider;

  provider.LoadSettingsFromFile();

  EXPECT_EQ(provider.GetValue(u"LoaderLoggingDir"), u"/tmp/l\r");
  EXPECT_EQ(provider.GetValue(u"LoaderLoggingDir").size(), 7U);
  EXPECT_EQ(log.Lines(), (Lines{"TRACE\tLoadSettingsFromFile: process line 'LoaderLoggingDir=/tmp/l\r'",
                                "TRACE\tLoadSettingsFromFile: key = 'LoaderLoggingDir', value = '/tmp/l\r'",
                                "TRACE\tLoadSettingsFromFile: skip line '\r'", kLoadedLine}));
}

TEST(SettingsProvider, ANulCutsTheLogLinesOnPurposeAndNotTheValue) {
  const tests::CapturedLog log;
  const tests::SettingsFile file("k=a\0b\nx\0y\n"s);
  DotnetSettingsProvider provider;

  provider.LoadSettingsFromFile();

  EXPECT_EQ(provider.GetValue(u"k").size(), 3U);
  EXPECT_EQ(log.Lines(), (Lines{"TRACE\tLoadSettingsFromFile: process line 'k=a",
                                "TRACE\tLoadSettingsFromFile: key = 'k', value = 'a",
                                "TRACE\tLoadSettingsFromFile: skip line 'x", kLoadedLine}));
}

TEST(SettingsProvider, AKeyOrValueThatIsNotUtf8ThrowsAfterItsLinesAndEarlierPairsAreKept) {
  for (const std::string& bad : {"k=\xff"s, "\xff=v"s, "k=\xed\xa0\x80"s, "k=\xf4\x90\x80\x80"s, "k=\xc3"s}) {
    SCOPED_TRACE(testing::PrintToString(bad));
    const tests::CapturedLog log;
    const tests::SettingsFile file("a=1\n" + bad + "\nb=2\n");
    DotnetSettingsProvider provider;

    EXPECT_THROW(provider.LoadSettingsFromFile(), std::bad_cast);

    const std::size_t equals = bad.find('=');
    EXPECT_EQ(log.Lines(), (Lines{"TRACE\tLoadSettingsFromFile: process line 'a=1'",
                                  "TRACE\tLoadSettingsFromFile: key = 'a', value = '1'",
                                  "TRACE\tLoadSettingsFromFile: process line '" + bad + "'",
                                  "TRACE\tLoadSettingsFromFile: key = '" + bad.substr(0, equals) + "', value = '" +
                                      bad.substr(equals + 1) + "'"}));
    EXPECT_EQ(provider.GetValue(u"a"), u"1");
    EXPECT_EQ(provider.GetValue(u"b"), u"");
    EXPECT_EQ(provider.GetSettingsSource(), u"Settings not loaded yet");
  }
}

TEST(SettingsProvider, BytesThatAreNotUtf8InASkippedLineDoNoHarm) {
  const tests::CapturedLog log;
  const tests::SettingsFile file("\xff\nk=v\n");
  DotnetSettingsProvider provider;

  provider.LoadSettingsFromFile();

  EXPECT_EQ(log.Lines().front(), "TRACE\tLoadSettingsFromFile: skip line '\xff'");
  EXPECT_EQ(provider.GetValue(u"k"), u"v");
}

// Hears of nothing.
class Deaf final : public detail::SettingsListener {};

TEST(SettingsProvider, AListenerNeedNotHearOfAnything) {
  const tests::CapturedLog log;
  const tests::TempFolder folder;
  tests::WriteFile(folder / "settings.ini", "# a comment\nk=v\n");
  Deaf deaf;
  DotnetSettingsProvider provider(folder / "settings.ini", deaf);
  DotnetSettingsProvider missing(folder / "missing.ini", deaf);
  DotnetSettingsProvider broken("/proc/self/mem", deaf);

  provider.LoadSettingsFromFile();
  EXPECT_THROW(missing.LoadSettingsFromFile(), std::system_error);
  EXPECT_THROW(broken.LoadSettingsFromFile(), std::system_error);

  EXPECT_EQ(provider.GetValue(u"k"), u"v");
  EXPECT_EQ(log.Lines(), Lines{});
}

TEST(SettingsProvider, AfterAFailedLoadTheWholeFileIsReadAgain) {
  const tests::CapturedLog log;
  tests::SettingsFile file("a=1\nold=1\nk=\xff\n");
  DotnetSettingsProvider provider;
  EXPECT_THROW(provider.LoadSettingsFromFile(), std::bad_cast);
  file.Write("a=2\n");

  provider.LoadSettingsFromFile();

  EXPECT_EQ(provider.GetValue(u"a"), u"2");
  EXPECT_EQ(provider.GetValue(u"old"), u"1");  // Kept from the first load.
  EXPECT_EQ(provider.GetSettingsSource(), kWidePath);
}

TEST(SettingsProvider, AfterALoadNothingIsReadAgain) {
  const tests::CapturedLog log;
  tests::SettingsFile file("a=1\n");
  DotnetSettingsProvider provider;
  provider.LoadSettingsFromFile();
  file.Write("a=2\n");

  provider.LoadSettingsFromFile();

  EXPECT_EQ(provider.GetValue(u"a"), u"1");
  EXPECT_EQ(log.Lines().size(), 4U);
  EXPECT_EQ(log.Lines().back(), kLoadedAlreadyLine);
}

TEST(SettingsProvider, BeforeALoadThereIsNoValueAndTheSourceSaysSo) {
  DotnetSettingsProvider provider;

  EXPECT_EQ(provider.GetValue(u"DotnetRootFolder"), u"");
  EXPECT_EQ(provider.GetSettingsSource(), u"Settings not loaded yet");
}

TEST(SettingsProvider, AnEmptyKeyIsLoggedAndThrown) {
  const tests::CapturedLog log;
  const DotnetSettingsProvider provider;
  try {
    static_cast<void>(provider.GetValue(u""));
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::invalid_argument& failure) {
    EXPECT_STREQ(failure.what(), "Cannot read empty configuration key");
  }

  EXPECT_EQ(log.Lines(), (Lines{"ERROR\tRequested configuration key is empty"}));
}

TEST(SettingsInstance, IsOneAndReadsTheFileOnce) {
  const tests::CapturedLog log;
  const tests::SettingsFile file("k=v\n");

  DotnetSettingsProvider& first = DotnetSettingsProvider::GetInstance();
  DotnetSettingsProvider& second = DotnetSettingsProvider::GetInstance();

  EXPECT_EQ(&first, &second);
  EXPECT_EQ(second.GetValue(u"k"), u"v");
  EXPECT_EQ(log.Lines(),
            (Lines{"TRACE\tLoadSettingsFromFile: process line 'k=v'",
                   "TRACE\tLoadSettingsFromFile: key = 'k', value = 'v'", kLoadedLine, kLoadedAlreadyLine}));
}

TEST(SettingsInstance, IsTriedAgainAfterAFailureAtEveryCall) {
  const tests::CapturedLog log;
  for (int i = 0; i < 2; ++i) {
    try {
      DotnetSettingsProvider::GetInstance();
      ADD_FAILURE() << "nothing was thrown";
    } catch (const std::system_error& failure) {
      EXPECT_TRUE(std::string(failure.what()).starts_with("Cannot open settings file by path: " + kPath));
    }
  }
  const tests::SettingsFile file("k=v\n");

  EXPECT_EQ(DotnetSettingsProvider::GetInstance().GetValue(u"k"), u"v");

  EXPECT_EQ(log.Lines(), (Lines{kOpenFailedLine, kOpenFailedLine, "TRACE\tLoadSettingsFromFile: process line 'k=v'",
                                "TRACE\tLoadSettingsFromFile: key = 'k', value = 'v'", kLoadedLine}));
}

}  // namespace
}  // namespace netloader::quor
