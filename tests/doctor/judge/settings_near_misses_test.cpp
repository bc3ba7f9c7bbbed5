#include <gtest/gtest.h>

#include "doctor/examine/settings_report.h"
#include "doctor/judge/near_misses.h"
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
      {"blank before and after", "DotnetRootFolder= /r \n", "blank-at-end line 1, blank-at-start line 1"},
      {"blank after the key", "DotnetRootFolder =/r\n", "blank-around-key line 1"},
      {"blank before the key", " DotnetRootFolder=/r\n", "blank-around-key line 1"},
      {"blanks around the equals sign", "DotnetRootFolder = /r\n", "blank-around-key line 1, blank-at-start line 1"},
      {"double quotes", "DotnetRootFolder=\"/r\"\n", "quoted-value line 1"},
      {"single quotes", "LoaderLoggingDir='/l'\n", "quoted-value line 1"},
      {"quotes and a carriage return", "DotnetRootFolder=\"/r\"\r\n",
       "carriage-return-at-end line 1, quoted-value line 1"},
      {"wrong case", "dotnetrootfolder=/r\n", "wrong-letter-case line 1"},
      {"wrong case of the log folder", "LOADERLOGGINGDIR=/l\n", "wrong-letter-case line 1"},
      {"wrong case and a blank", "dotnetRootFolder =/r\n", "blank-around-key line 1, wrong-letter-case line 1"},
      {"byte-order mark before the root",
       "\xEF\xBB\xBF"
       "DotnetRootFolder=/r\n",
       "byte-order-mark line 1"},
      {"byte-order mark before what sets nothing", "\xEF\xBB\xBF# words\n", "byte-order-mark line 1"},
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
      {"plain", "DotnetRootFolder=/r\nLoaderLoggingDir=/l\n"},
      {"blanks inside of the value", "DotnetRootFolder=/my runtime\n"},
      {"one quote", "DotnetRootFolder=/r\"\n"},
      {"a lone quote", "DotnetRootFolder=\"\n"},
      {"two different quotes", "DotnetRootFolder=\"/r'\n"},
      {"quotes inside", "DotnetRootFolder=/\"r\"/x\n"},
      {"carriage return after another key", "X=1\r\nDotnetRootFolder=/r\n"},
      {"another key in quotes", "X=\"1\"\n"},
      {"a blank around another key", " X =1\n"},
      {"a key that only begins so", "DotnetRootFolders=/r\ndotnetroot=/r\n"},
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
  EXPECT_EQ(warnings[0].cure, "write DotnetRootFolder");
  EXPECT_EQ(warnings[0].text, "the key 'DOTNETrootFOLDER' differs in letter case, so it is another key");
}

}  // namespace
}  // namespace doctor
