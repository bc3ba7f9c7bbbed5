// The settings file and what it decides.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/launcher.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/settings_file.h"
#include "tests/support/text.h"

namespace tests {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

const std::string kCannotOpen = "Error occurred: Cannot open settings file by path: " + std::string(kSettingsPath);

struct Row {
  const char* name;
  std::string settings;  // ROOT stands for the runtime's root folder.
};

// What a launch with these settings ends with, where a good runtime stands at ROOT.
Outcome LaunchWith(const std::string& settings, const StandInHost& host = {}) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.36");
  const SettingsFile file(Replaced(settings, "ROOT", runtime.Root()));
  return Launcher(host).Run();
}

TEST(Settings, TheRootIsFoundWhereverTheGrammarHasIt) {
  const Row rows[] = {
      {"one line", "DotnetRootFolder=ROOT\n"},
      {"no newline at the end", "DotnetRootFolder=ROOT"},
      {"the last of several wins", "DotnetRootFolder=/nowhere\nDotnetRootFolder=ROOT\n"},
      {"among sections, comments and empty lines", "[main]\n\n# words\n; words\nDotnetRootFolder=ROOT\n\n"},
      {"after a line that begins with an equals sign", "=DotnetRootFolder=/x\nDotnetRootFolder=ROOT\n"},
      {"beside other keys", "ProductRootDir=/x\nLoaderLoggingDir=/y\n#a=b\nDotnetRootFolder=ROOT\nk=\n"},
      {"other letter case is another key", "DotnetRootFolder=ROOT\ndotnetrootfolder=/x\nDOTNETROOTFOLDER=/x\n"},
      {"blanks are part of another key", "DotnetRootFolder=ROOT\nDotnetRootFolder =/x\n DotnetRootFolder=/x\n"},
      {"a NUL cuts the value", "DotnetRootFolder=ROOT\0/cut/off\n"s},
      {"bytes that are not text, on a line that is skipped", "\xff\xfe\xc0\nDotnetRootFolder=ROOT\n"},
      {"a byte-order mark belongs to the first key", "\xef\xbb\xbfk=v\nDotnetRootFolder=ROOT\n"},
      {"carriage returns elsewhere", "k=v\r\n\r\nDotnetRootFolder=ROOT\n"},
      {"a slash at the end", "DotnetRootFolder=ROOT/\n"},
      {"keys and values of any script", "ключ😀=значение\nDotnetRootFolder=ROOT\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const StandInHost host;
    EXPECT_TRUE(EndedSilently(LaunchWith(row.settings, host), 0));
    EXPECT_EQ(host.VersionThatRan(), "6.0.36");
  }
}

TEST(Settings, WithoutAUsableRootTheStatusIs255) {
  const Row rows[] = {
      {"an empty file", ""},
      {"no such key", "k=v\n"},
      {"an empty value", "DotnetRootFolder=\n"},
      {"the last of several is empty", "DotnetRootFolder=ROOT\nDotnetRootFolder=\n"},
      {"another letter case", "dotnetrootfolder=ROOT\n"},
      {"a blank before the key", " DotnetRootFolder=ROOT\n"},
      {"a blank after the key", "DotnetRootFolder =ROOT\n"},
      {"a blank before the value", "DotnetRootFolder= ROOT\n"},
      {"quotes", "DotnetRootFolder=\"ROOT\"\n"},
      {"a comment", "#DotnetRootFolder=ROOT\n"},
      {"a colon", "DotnetRootFolder:ROOT\n"},
      {"a byte-order mark before the key",
       "\xef\xbb\xbf"
       "DotnetRootFolder=ROOT\n"},
      {"a carriage return that stays in the value", "DotnetRootFolder=ROOT\r\n"},
      {"a carriage return instead of a newline", "k=v\rDotnetRootFolder=ROOT\n"},
      {"a NUL at the beginning of the value", "DotnetRootFolder=\0ROOT\n"s},
      {"a NUL in the key", "DotnetRootFolder\0=ROOT\n"s},
      {"a root that is not there", "DotnetRootFolder=ROOT/nowhere\n"},
      {"another key that names it", "ProductRootDir=ROOT\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const StandInHost host;
    EXPECT_TRUE(EndedSilently(LaunchWith(row.settings, host), 255));
    EXPECT_TRUE(host.Calls().empty());
  }
}

TEST(Settings, ACarriageReturnInTheValueIsPartOfTheFolderName) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.36");
  const TempFolder folder;
  fs::create_directory_symlink(runtime.Root(), folder / "root\r");
  const SettingsFile settings("DotnetRootFolder=" + (folder / "root\r\n").string());
  const StandInHost host;

  EXPECT_TRUE(EndedSilently(Launcher(host).Run(), 0));
  EXPECT_EQ(host.Call("initialize").fields.at("dotnet_root"), folder / "root\r");
}

TEST(Settings, TheRootMayHoldEqualsSignsBlanksAndAnyScriptUnderEveryLocale) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.36");
  const TempFolder folder;
  for (const std::string name : {"a=b=c", " a b ", "корень", "根😀", "\"quoted\""}) {
    for (const std::string locale : {"C", "C.UTF-8"}) {
      SCOPED_TRACE(name + " under " + locale);
      fs::remove(folder / name);
      fs::create_directory_symlink(runtime.Root(), folder / name);
      const auto settings = SettingsFile::ForRoot(folder / name);
      const StandInHost host;

      EXPECT_TRUE(EndedSilently(Launcher(host).Variable("LC_ALL", locale).Run(), 0));
      EXPECT_EQ(host.Call("initialize").fields.at("dotnet_root"), folder / name);
    }
  }
}

TEST(Settings, AMissingFileIsReportedAndAborts) {
  EXPECT_TRUE(AbortedSaying(Launcher().Run(), kCannotOpen + ": iostream error"));
}

TEST(Settings, AnUnreadableFileIsReportedAndAborts) {
  const SettingsFile settings("DotnetRootFolder=/x\n");
  fs::permissions(kSettingsPath, fs::perms::none);

  EXPECT_TRUE(AbortedSaying(Launcher().WithoutReadingEverything().Run(), kCannotOpen + ": iostream error"));
}

TEST(Settings, AFileThatCannotBeReadToItsEndIsReportedAndAborts) {
  fs::create_directories(fs::path(kSettingsPath).parent_path());
  fs::create_symlink("/proc/self/mem", kSettingsPath);

  const Outcome outcome = Launcher().Run();

  fs::remove(kSettingsPath);
  EXPECT_TRUE(AbortedSaying(outcome, "Error occurred: Cannot read settings file by path: " +
                                         std::string(kSettingsPath) + ": iostream error"));
}

TEST(Settings, AFolderInTheFilesPlaceIsAnEmptyFile) {
  const SettingsFile settings("");
  fs::remove(kSettingsPath);
  fs::create_directory(kSettingsPath);

  EXPECT_TRUE(EndedSilently(Launcher().Run(), 255));
}

TEST(Settings, ALinkInTheFilesPlaceIsFollowed) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.36");
  const SettingsFile settings("");
  WriteFile(runtime.Root() / "elsewhere.ini", "DotnetRootFolder=" + runtime.Root().string());
  fs::remove(kSettingsPath);
  fs::create_symlink(runtime.Root() / "elsewhere.ini", kSettingsPath);

  const StandInHost host;
  EXPECT_TRUE(EndedSilently(Launcher(host).Run(), 0));
  EXPECT_EQ(host.VersionThatRan(), "6.0.36");
}

TEST(Settings, KeysAndValuesThatAreNotUtf8AreABadCastAndAbort) {
  const Row rows[] = {
      {"a lone continuation byte", "k=\x80\n"},
      {"an impossible byte", "k=\xff\n"},
      {"a sequence that ends with the line", "k=\xd0\n"},
      {"an overlong slash", "k=\xc0\xaf\n"},
      {"a surrogate", "k=\xed\xa0\x80\n"},
      {"above the last code point", "k=\xf4\x90\x80\x80\n"},
      {"in a key", "\xff=v\n"},
      {"after the root was found", "DotnetRootFolder=ROOT\nk=\xff\n"},
      {"in the root itself", "DotnetRootFolder=ROOT\xff\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const StandInHost host;
    EXPECT_TRUE(AbortedSaying(LaunchWith(row.settings, host), "Error occurred: std::bad_cast"));
    EXPECT_TRUE(host.Calls().empty());
  }
}

TEST(Settings, NoLogFileIsEverMade) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.36");
  const TempFolder logs;
  const std::string root = "DotnetRootFolder=" + runtime.Root().string() + "\n";
  for (const std::string& line :
       {""s, "LoaderLoggingDir=" + logs.Path().string() + "\n", "LoaderLoggingDir=relative\n"s}) {
    SCOPED_TRACE(line);
    const SettingsFile settings(root + line);
    const StandInHost host;

    EXPECT_TRUE(EndedSilently(
        Launcher(host).Folder(logs.Path()).Variable("TMP", logs.Path()).Variable("TEMP", logs.Path()).Run(), 0));
    EXPECT_EQ(host.VersionThatRan(), "6.0.36");
    EXPECT_TRUE(fs::is_empty(logs.Path()));
  }
}

TEST(Settings, TemporaryFoldersOfAnyKindStopNothing) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.36");
  const auto settings = SettingsFile::ForRoot(runtime.Root());
  for (const std::string folder : {"", "relative", "/no/such/folder", "\xff\xfe"}) {
    SCOPED_TRACE(folder);
    const StandInHost host;
    EXPECT_TRUE(EndedSilently(Launcher(host).Variable("TMP", folder).Run(), 0));
    EXPECT_TRUE(EndedSilently(Launcher(host).Variable("TEMP", folder).Run(), 0));
    EXPECT_EQ(host.VersionThatRan(), "6.0.36, 6.0.36");
  }
}

}  // namespace
}  // namespace tests
