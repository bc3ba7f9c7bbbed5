#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "doctor/examine/settings_report.h"
#include "doctor/judge/near_misses/near_misses.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

// "code line 1", one after the other.
std::string Misses(std::string_view bytes) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "settings.ini", bytes);
  std::string misses;
  for (const Warning& warning : SettingsNearMisses(ExamineSettings(folder / "settings.ini"))) {
    misses.append(misses.empty() ? "" : ", ")
        .append(RowOf(kFindings, warning.finding).code)
        .append(" " + warning.place);
    EXPECT_NE(warning.text, "");
    EXPECT_NE(warning.cure, "");
    EXPECT_EQ((warning.text + warning.meaning + warning.cure).find('{'), std::string::npos) << warning.cure;
  }
  return misses;
}

TEST(SettingsNearMisses, AreNamedWithTheirLine) {
  struct Row {
    const char* name;
    std::string bytes, misses;
  };
  const Row rows[] = {
      {"carriage return after the root", "X=1\nDotnetRootFolder=/r\r\n", "carriage-return-at-end line 2"},
      {"carriage return after the log folder", "LoaderLoggingDir=/l\r\n", "carriage-return-at-end line 1"},
      {"blank after the root", "DotnetRootFolder=/r \n", "blank-at-end line 1"},
      {"tab after the root", "DotnetRootFolder=/r\t\n", "blank-at-end line 1"},
      {"blank before the log folder", "LoaderLoggingDir= /l\n", "blank-at-start line 1"},
      {"blank before and after", "DotnetRootFolder= /r \n",
       "several-mistakes line 1, blank-at-end line 1, blank-at-start line 1"},
      {"blank after the key", "DotnetRootFolder =/r\n", "blank-around-key line 1"},
      {"blank before the key", " DotnetRootFolder=/r\n", "blank-around-key line 1"},
      {"blanks around the equals sign", "DotnetRootFolder = /r\n",
       "several-mistakes line 1, blank-around-key line 1, blank-at-start line 1"},
      {"double quotes", "DotnetRootFolder=\"/r\"\n", "quoted-value line 1"},
      {"single quotes", "LoaderLoggingDir='/l'\n", "quoted-value line 1"},
      {"quotes and a carriage return", "DotnetRootFolder=\"/r\"\r\n",
       "several-mistakes line 1, carriage-return-at-end line 1, quoted-value line 1"},
      {"wrong case", "dotnetrootfolder=/r\n", "wrong-letter-case line 1"},
      {"wrong case of the log folder", "LOADERLOGGINGDIR=/l\n", "wrong-letter-case line 1"},
      {"wrong case and a blank", "dotnetRootFolder =/r\n",
       "several-mistakes line 1, blank-around-key line 1, wrong-letter-case line 1"},
      {"byte-order mark before the root",
       "\xEF\xBB\xBF"
       "DotnetRootFolder=/r\n",
       "byte-order-mark line 1"},
      {"byte-order mark before what sets nothing", "\xEF\xBB\xBF# words\n", "byte-order-mark line 1"},
      {"byte-order mark and quotes",
       "\xEF\xBB\xBF"
       "DotnetRootFolder=\"/r\"\n",
       "several-mistakes line 1, byte-order-mark line 1, quoted-value line 1"},
      {"typographic quotes", "DotnetRootFolder=\u201C/r\u201D\n", "typographic-quotes line 1"},
      {"the home folder", "DotnetRootFolder=~/dotnet\n", "tilde-in-value line 1"},
      {"a variable", "DotnetRootFolder=$HOME/dotnet\n", "variable-in-value line 1"},
      {"another user's home folder", "DotnetRootFolder=~root/dotnet\n", "tilde-in-value line 1"},
      {"another variable", "DotnetRootFolder=$DOTNET_ROOT\n", "variable-in-value line 1"},
      {"a NUL", std::string("DotnetRootFolder=/r\0\n", 21), "nul-in-value line 1"},
      {"export", "export DotnetRootFolder=/r\n", "export-before-key line 1"},
      {"a colon", "DotnetRootFolder: /r\n", "colon-for-equals line 1"},
      {"a section", "[main]\nDotnetRootFolder=/r\n", "section-heading line 1"},
      {"a letter left out", "DotnetRotFolder=/r\n", "key-nearly-right line 1"},
      {"a letter too many", "DotnetRootFolders=/r\n", "key-nearly-right line 1"},
      {"another letter", "DotnetRootFalder=/r\n", "key-nearly-right line 1"},
      {"two letters exchanged", "DotnteRootFolder=/r\n", "key-nearly-right line 1"},
      {"the first letter left out", "otnetRootFolder=/r\n", "key-nearly-right line 1"},
      {"key given twice", "DotnetRootFolder=/a\nDotnetRootFolder=/b\n", "key-given-twice line 1"},
      {"an unused key given twice", "X=1\nX=2\n", "key-given-twice line 1"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(Misses(row.bytes), row.misses);
  }
}

TEST(SettingsNearMisses, WhatIsMeantIsNone) {
  struct Row {
    const char* name;
    std::string bytes;
  };
  const Row rows[] = {
      {"what the dynamic loader replaces, which the runtime's check reports", "DotnetRootFolder=/r/$ORIGIN\n"},
      {"plain", "DotnetRootFolder=/r\nLoaderLoggingDir=/l\n"},
      {"blanks inside of the value", "DotnetRootFolder=/my runtime\n"},
      {"one quote", "DotnetRootFolder=/r\"\n"},
      {"a lone quote", "DotnetRootFolder=\"\n"},
      {"two different quotes", "DotnetRootFolder=\"/r'\n"},
      {"quotes inside", "DotnetRootFolder=/\"r\"/x\n"},
      {"carriage return after another key", "X=1\r\nDotnetRootFolder=/r\n"},
      {"another key in quotes", "X=\"1\"\n"},
      {"a blank around another key", " X =1\n"},
      {"a key that only begins so", "DotnetRootFolderOld=/r\ndotnetroot=/r\n"},
      {"a key two letters off", "DotnetRootFoldr2=/r\nDotnetoRotFoldre=/r\n"},
      {"a line with a colon that is no key", "Note: see the manual\n"},
      {"brackets inside a line", "X=[main]\n"},
      {"a byte-order mark later",
       "X=1\n\xEF\xBB\xBF"
       "Y=2\n"},
      {"lines that set nothing", "# DotnetRootFolder=\n\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(Misses(row.bytes), "");
  }
}

TEST(SettingsNearMisses, TheirCureNamesTheKeyAsItMustBe) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "settings.ini", "DOTNETrootFOLDER=/r\n");

  const Warnings warnings = SettingsNearMisses(ExamineSettings(folder / "settings.ini"));

  ASSERT_EQ(warnings.size(), 1U);
  EXPECT_EQ(warnings[0].cure,
            "sed -i '1s|.*|DotnetRootFolder=/r|' " + std::filesystem::path(folder / "settings.ini").string());
  EXPECT_EQ(warnings[0].text, "the key 'DOTNETrootFOLDER' in the settings differs in letter case");
}

// The settings after the first warning's cure was given to a shell.
std::string Mended(const std::string& bytes) {
  const tests::TempFolder folder;
  const std::string file = folder / "the product's settings.ini";
  tests::WriteFile(file, bytes);
  const Warnings warnings = SettingsNearMisses(ExamineSettings(file));
  EXPECT_FALSE(warnings.empty()) << bytes;
  EXPECT_EQ(warnings.at(0).cure.find('{'), std::string::npos) << "without its value: " << warnings.at(0).cure;
  EXPECT_EQ(std::system(warnings.at(0).cure.c_str()), 0) << warnings.at(0).cure;
  return tests::ReadFile(file);
}

TEST(SettingsNearMisses, TheirCureMendsTheFile) {
  const std::string utf16("D\0o\0t\0n\0e\0t\0R\0o\0o\0t\0F\0o\0l\0d\0e\0r\0=\0/\0r\0\r\0\n\0", 42);
  const std::string utf16be = '\0' + utf16.substr(0, utf16.size() - 1);
  const std::string lines[] = {"DotnetRootFolder=/r\r\n",
                               "DotnetRootFolder=/r \n",
                               "DotnetRootFolder= \"/r\" \r\n",
                               " dotnetrootfolder = '/r'\n",
                               "export DotnetRootFolder=/r\n",
                               "DotnetRootFolder: /r\n",
                               "DotnetRotFolder=/r\n",
                               "DotnetRootFolder=\u201C/r\u201D\n",
                               "\xEF\xBB\xBF"
                               "DotnetRootFolder=/r\n",
                               utf16,
                               "\xFF\xFE" + utf16,
                               utf16be,
                               "\xFE\xFF" + utf16be,
                               "DotnetRootFolder=/r\nDotnetRootFolder=/s\n"};
  for (const std::string& line : lines) {
    EXPECT_EQ(Mended(line), "DotnetRootFolder=/r\n") << line;
  }
}

TEST(SettingsNearMisses, TheQuotesOfEveryLanguageAreMended) {
  for (const std::string open : {"\u201C", "\u201D", "\u201E", "\u201F", "\u2018", "\u2019", "\u201A", "\u00AB"}) {
    EXPECT_EQ(Mended("DotnetRootFolder=" + open + "/r\u00BB\n"), "DotnetRootFolder=/r\n") << open;
  }
}

TEST(SettingsNearMisses, ACureKeepsEveryLetterOfThePath) {
  EXPECT_EQ(Mended("DotnetRootFolder=/a|b&c\\d'e\"f \n"), "DotnetRootFolder=/a|b&c\\d'e\"f\n");
}

TEST(SettingsNearMisses, ACureReplacesAHomeFolderAsAShellDoes) {
  tests::ScopedEnvironment environment;
  environment.Set("HOME", "/home/of us");

  for (const char* own : {"~", "$HOME", "${HOME}"}) {
    EXPECT_EQ(Mended(std::string("DotnetRootFolder=") + own + "/dotnet\n"), "DotnetRootFolder=/home/of us/dotnet\n");
    EXPECT_EQ(Mended(std::string("DotnetRootFolder=") + own + "\n"), "DotnetRootFolder=/home/of us\n");
  }
  EXPECT_EQ(Mended("DotnetRootFolder=~root/dotnet\n"), "DotnetRootFolder=/root/dotnet\n");
}

TEST(SettingsNearMisses, ACureThatOnlyAPersonKnowsIsInWords) {
  for (const char* value : {"~no-such-user/dotnet", "$HOMER/dotnet", "$DOTNET_ROOT", "/opt/$HOME", "~$HOME"}) {
    const tests::TempFolder folder;
    tests::WriteFile(folder / "settings.ini", std::string("DotnetRootFolder=") + value + "\n");

    const Warnings warnings = SettingsNearMisses(ExamineSettings(folder / "settings.ini"));

    EXPECT_EQ(warnings.back().cure,
              "write the folder itself into line 1 of " + std::filesystem::path(folder / "settings.ini").string());
  }
}

TEST(SettingsNearMisses, ACureLeavesOutWhatStandsBehindANul) {
  EXPECT_EQ(Mended(std::string("DotnetRootFolder=/r\0x\n", 22)), "DotnetRootFolder=/r\n");
}

TEST(SettingsNearMisses, TheFileAsAWholeMayBeTheMistake) {
  const tests::TempFolder folder;
  std::filesystem::create_directory(folder / "settings.ini");
  tests::WriteFile(folder / "other.ini.txt", "DotnetRootFolder=/r\n");

  const Warnings ofFolder = SettingsNearMisses(ExamineSettings(folder / "settings.ini"));
  const Warnings ofOther = SettingsNearMisses(ExamineSettings(folder / "other.ini"));

  ASSERT_EQ(ofFolder.size(), 1U);
  EXPECT_EQ(ofFolder[0].finding, Finding::kSettingsAreFolder);
  ASSERT_EQ(ofOther.size(), 1U);
  EXPECT_EQ(ofOther[0].finding, Finding::kSettingsHaveExtension);
}

TEST(SettingsNearMisses, TheFolderOfTheFileMayBeMissingOrBeNone) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "file", "");
  const std::string file = folder / "file";
  const std::string missing = folder / "missing";
  const std::string write = "/settings.ini";

  const Warnings inFile = SettingsNearMisses(ExamineSettings(file + write));
  const Warnings inNothing = SettingsNearMisses(ExamineSettings(missing + write));

  ASSERT_EQ(inFile.size(), 1U);
  EXPECT_EQ(inFile[0].finding, Finding::kSettingsFolderNoFolder);
  EXPECT_EQ(inFile[0].cure, "mv " + file + " " + file + ".old && mkdir -p " + file +
                                " && echo DotnetRootFolder=/usr/share/dotnet > " + file + write);
  ASSERT_EQ(inNothing.size(), 1U);
  EXPECT_EQ(inNothing[0].finding, Finding::kSettingsFolderMissing);
  EXPECT_EQ(inNothing[0].cure,
            "mkdir -p " + missing + " && echo DotnetRootFolder=/usr/share/dotnet > " + missing + write);
}

TEST(SettingsNearMisses, ALinkThatLeadsNowhereIsNamed) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "file", "");
  for (const char* target : {"nothing", "file/nothing", "settings.ini"}) {
    SCOPED_TRACE(target);
    std::filesystem::remove(folder / "settings.ini");
    std::filesystem::create_symlink(target, folder / "settings.ini");

    const Warnings warnings = SettingsNearMisses(ExamineSettings(folder / "settings.ini"));

    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_EQ(warnings[0].finding, Finding::kSettingsLinkBroken);
    EXPECT_EQ(warnings[0].meaning, "It leads to " + std::string(target) + ".");
  }
  std::filesystem::remove(folder / "settings.ini");
  std::filesystem::create_symlink("file", folder / "settings.ini");
  EXPECT_TRUE(SettingsNearMisses(ExamineSettings(folder / "settings.ini")).empty());
}

TEST(SettingsNearMisses, AKeyThatIsGivenAgainIsNamedUnlessItMayBeASecret) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "settings.ini", "Other=1\nOther=2\n=x\nPassword!hunter2=1\nPassword!hunter2=2\n");

  const Warnings warnings = SettingsNearMisses(ExamineSettings(folder / "settings.ini"));

  ASSERT_EQ(warnings.size(), 2U);
  EXPECT_EQ(warnings[0].text, "line 2 of the settings sets 'Other' again");
  EXPECT_EQ(warnings[1].text, "line 5 of the settings sets its key again");
}

TEST(SettingsNearMisses, OfKeysThatAreGivenAgainTheFirstThousandAreNamedAndNoOtherMistakeIsLost) {
  const tests::TempFolder folder;
  std::string lines;
  for (int line = 1; line <= 1500; ++line) {
    lines += "DotnetRootFolder=/r\n";
  }
  tests::WriteFile(folder / "settings.ini", lines + "DotnetRootFolder=/r \n");

  const Warnings warnings = SettingsNearMisses(ExamineSettings(folder / "settings.ini"));

  ASSERT_EQ(warnings.size(), 1001U);
  EXPECT_EQ(warnings.left_out, 500U);
  EXPECT_EQ(warnings[999].finding, Finding::kKeyGivenTwice);
  EXPECT_EQ(warnings[999].place, "line 1000");
  EXPECT_EQ(warnings[1000].finding, Finding::kBlankAtEnd);
}

TEST(SettingsNearMisses, OnlyTheLineThatALaunchDependsOnMayDecide) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "settings.ini", "LoaderLoggingDir=/l \nDotnetRootFolder=/r \n");

  const Warnings warnings = SettingsNearMisses(ExamineSettings(folder / "settings.ini"));

  ASSERT_EQ(warnings.size(), 2U);
  EXPECT_FALSE(warnings[0].may_decide);
  EXPECT_TRUE(warnings[1].may_decide);
}

TEST(SettingsNearMisses, ALineThatIsReplacedMayNotDecide) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "settings.ini", "DotnetRootFolder=/r \nDotnetRootFolder=/r\n");

  const Warnings warnings = SettingsNearMisses(ExamineSettings(folder / "settings.ini"));

  ASSERT_FALSE(warnings.empty());
  EXPECT_EQ(warnings[0].finding, Finding::kBlankAtEnd);
  EXPECT_FALSE(warnings[0].may_decide);
}

}  // namespace
}  // namespace doctor
