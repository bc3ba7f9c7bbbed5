// Settings of every kind: does a launch end as the doctor says?
#include <gtest/gtest.h>

#include <string>

#include "tests/prediction/known_world.h"
#include "tests/support/text.h"

namespace tests {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

struct SettingsCase {
  const char* name;
  std::string settings;  // ROOT stands for the root of a good runtime.
  const char* outcome;
};

void CheckSettings(const SettingsCase& known) {
  SCOPED_TRACE(known.name);
  KnownWorld world;
  world.runtime.AddHost("6.0.36");
  world.settings.Write(Replaced(known.settings, "ROOT", world.runtime.Root()));

  const Comparison comparison = Compare(world.host, world.start);

  EXPECT_EQ(comparison.difference, "");
  EXPECT_EQ(comparison.outcome, known.outcome);
}

TEST(PredictedSettings, TheRootIsFoundWhereverTheGrammarHasIt) {
  const SettingsCase cases[] = {
      {"one line", "DotnetRootFolder=ROOT\n", "runs"},
      {"no newline at the end", "DotnetRootFolder=ROOT", "runs"},
      {"the last of several wins", "DotnetRootFolder=/nowhere\nDotnetRootFolder=ROOT\n", "runs"},
      {"among sections and comments", "[main]\n\n# words\n; words\nDotnetRootFolder=ROOT\n\n", "runs"},
      {"after a line that begins with =", "=DotnetRootFolder=/x\nDotnetRootFolder=ROOT\n", "runs"},
      {"beside other keys", "ProductRootDir=/x\nLoaderLoggingDir=/y\n#a=b\nDotnetRootFolder=ROOT\nk=\n", "runs"},
      {"another letter case", "DotnetRootFolder=ROOT\ndotnetrootfolder=/x\nDOTNETROOTFOLDER=/x\n", "runs"},
      {"blanks in another key", "DotnetRootFolder=ROOT\nDotnetRootFolder =/x\n DotnetRootFolder=/x\n", "runs"},
      {"a NUL cuts the value", "DotnetRootFolder=ROOT\0/cut/off\n"s, "runs"},
      {"no text on a skipped line", "\xff\xfe\xc0\nDotnetRootFolder=ROOT\n", "runs"},
      {"a byte-order mark", "\xef\xbb\xbfk=v\nDotnetRootFolder=ROOT\n", "runs"},
      {"carriage returns elsewhere", "k=v\r\n\r\nDotnetRootFolder=ROOT\n", "runs"},
      {"a slash at the end", "DotnetRootFolder=ROOT/\n", "runs"},
      {"any script", "ключ😀=значение\nDotnetRootFolder=ROOT\n", "runs"},
      {"a relative log folder", "DotnetRootFolder=ROOT\nLoaderLoggingDir=relative\n", "runs"},
  };
  for (const SettingsCase& known : cases) {
    CheckSettings(known);
  }
}

TEST(PredictedSettings, WithoutAUsableRootTheStatusIs255) {
  const SettingsCase cases[] = {
      {"an empty file", "", "status-255"},
      {"no such key", "k=v\n", "status-255"},
      {"an empty value", "DotnetRootFolder=\n", "status-255"},
      {"the last of several is empty", "DotnetRootFolder=ROOT\nDotnetRootFolder=\n", "status-255"},
      {"another letter case", "dotnetrootfolder=ROOT\n", "status-255"},
      {"a blank before the key", " DotnetRootFolder=ROOT\n", "status-255"},
      {"a blank after the key", "DotnetRootFolder =ROOT\n", "status-255"},
      {"a blank before the value", "DotnetRootFolder= ROOT\n", "status-255"},
      {"quotes", "DotnetRootFolder=\"ROOT\"\n", "status-255"},
      {"a comment", "#DotnetRootFolder=ROOT\n", "status-255"},
      {"a colon", "DotnetRootFolder:ROOT\n", "status-255"},
      {"a byte-order mark before the key",
       "\xef\xbb\xbf"
       "DotnetRootFolder=ROOT\n",
       "status-255"},
      {"a carriage return in the value", "DotnetRootFolder=ROOT\r\n", "status-255"},
      {"a carriage return for a newline", "k=v\rDotnetRootFolder=ROOT\n", "status-255"},
      {"a NUL before the value", "DotnetRootFolder=\0ROOT\n"s, "status-255"},
      {"a NUL in the key", "DotnetRootFolder\0=ROOT\n"s, "status-255"},
      {"a root that is not there", "DotnetRootFolder=ROOT/nowhere\n", "status-255"},
      {"another key that names it", "ProductRootDir=ROOT\n", "status-255"},
  };
  for (const SettingsCase& known : cases) {
    CheckSettings(known);
  }
}

TEST(PredictedSettings, WhatIsNotUtf8Aborts) {
  const SettingsCase cases[] = {
      {"a lone continuation byte", "k=\x80\n", "aborts"},
      {"an impossible byte", "k=\xff\n", "aborts"},
      {"a sequence that ends with the line", "k=\xd0\n", "aborts"},
      {"an overlong slash", "k=\xc0\xaf\n", "aborts"},
      {"a surrogate", "k=\xed\xa0\x80\n", "aborts"},
      {"above the last code point", "k=\xf4\x90\x80\x80\n", "aborts"},
      {"in a key", "\xff=v\n", "aborts"},
      {"after the root was found", "DotnetRootFolder=ROOT\nk=\xff\n", "aborts"},
      {"in the root itself", "DotnetRootFolder=ROOT\xff\n", "aborts"},
      {"behind a NUL", "DotnetRootFolder=ROOT\0\xff\n"s, "aborts"},
  };
  for (const SettingsCase& known : cases) {
    CheckSettings(known);
  }
}

TEST(PredictedSettings, AnythingCanStandInTheFilesPlace) {
  const KnownCase cases[] = {
      {"nothing", [](KnownWorld&) { fs::remove(kSettingsPath); }, "aborts"},
      {"an unreadable file",
       [](KnownWorld& world) {
         fs::permissions(kSettingsPath, fs::perms::none);
         world.start.reads_everything = false;
       },
       "aborts"},
      {"a file that cannot be read",
       [](KnownWorld&) {
         fs::remove(kSettingsPath);
         fs::create_symlink("/proc/self/mem", kSettingsPath);
       },
       "aborts"},
      {"a folder",
       [](KnownWorld&) {
         fs::remove(kSettingsPath);
         fs::create_directory(kSettingsPath);
       },
       "status-255"},
      {"a link to a file",
       [](KnownWorld& world) {
         world.runtime.AddHost("6.0.1");
         fs::rename(kSettingsPath, world.runtime.Root() / "elsewhere.ini");
         fs::create_symlink(world.runtime.Root() / "elsewhere.ini", kSettingsPath);
       },
       "runs", "6.0.1"},
      {"a link to nowhere",
       [](KnownWorld&) {
         fs::remove(kSettingsPath);
         fs::create_symlink("nowhere", kSettingsPath);
       },
       "aborts"},
      {"a file where its folder should be",
       [](KnownWorld&) {
         fs::remove_all(fs::path(kSettingsPath).parent_path());
         WriteFile(fs::path(kSettingsPath).parent_path(), "words");
       },
       "aborts"},
  };
  for (const KnownCase& known : cases) {
    Check(known);
    fs::remove_all("/var/opt/morvath/quor");
  }
}

TEST(PredictedSettings, TheRootMayHoldAnythingUnderEveryLocale) {
  for (const std::string name : {"a=b=c", " a b ", "корень", "根😀", "\"quoted\"", "root\r"}) {
    for (const std::string locale : {"C", "C.UTF-8", "no_such_locale"}) {
      SCOPED_TRACE(name + " under " + locale);
      KnownWorld world;
      world.runtime.AddHost("6.0.36");
      const TempFolder folder;
      fs::create_directory_symlink(world.runtime.Root(), folder / name);
      world.settings.Write("DotnetRootFolder=" + (folder / name).string() + "\n");
      world.start.variables["LC_ALL"] = locale;

      const Comparison comparison = Compare(world.host, world.start);

      EXPECT_EQ(comparison.difference, "");
      EXPECT_EQ(comparison.outcome, "runs");
    }
  }
}

TEST(PredictedSettings, VariablesChangeNothing) {
  for (const std::string name : {"TMP", "TEMP", "DOTNET_MULTILEVEL_LOOKUP", "DOTNET_EnableDiagnostics",
                                 "COMPlus_GCName", "DOTNET_GCName", "DOTNET_STARTUP_HOOKS", "DOTNET_ROOT"}) {
    for (const std::string value : {"", "relative", "/no/such/folder", "\xff\xfe"}) {
      SCOPED_TRACE(name + "=" + value);
      KnownWorld world;
      world.runtime.AddHost("6.0.36");
      world.start.variables[name] = value;

      const Comparison comparison = Compare(world.host, world.start);

      EXPECT_EQ(comparison.difference, "");
      EXPECT_EQ(comparison.outcome, "runs");
    }
  }
}

}  // namespace
}  // namespace tests
