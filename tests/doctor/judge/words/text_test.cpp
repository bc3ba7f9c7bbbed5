#include "doctor/judge/words/text.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

TEST(Text, WhatCannotBeSeenBecomesAnEscape) {
  struct Row {
    const char* name;
    std::string bytes, shown;
  };
  const Row rows[] = {
      {"plain", "/usr/share/dotnet", "/usr/share/dotnet"},
      {"two, three and four bytes", "\u00e4\u20ac\U0001F600", "\u00e4\u20ac\U0001F600"},
      {"a blank is seen", "a b~", "a b~"},
      {"line end, carriage return, tab", "a\nb\rc\td", "a\\nb\\rc\\td"},
      {"backslash", "a\\nb", "a\\\\nb"},
      {"escape sequence", "\033[31m", "\\x1b[31m"},
      {"NUL and delete", std::string("a\0b\x7f", 4), "a\\x00b\\x7f"},
      {"a control beyond ASCII", "a\u0085b\u009fc\u00a0", "a\\xc2\\x85b\\xc2\\x9fc\u00a0"},
      {"soft hyphen", "\u00ad", "\\xc2\\xad"},
      {"byte-order mark", "\ufeffkey", "\\xef\\xbb\\xbfkey"},
      {"no width", "\u200b\u200f\u2060\u206f", "\\xe2\\x80\\x8b\\xe2\\x80\\x8f\\xe2\\x81\\xa0\\xe2\\x81\\xaf"},
      {"text turned around", "\u202e\u2028", "\\xe2\\x80\\xae\\xe2\\x80\\xa8"},
      {"neighbours of those", "\u200a\u2010\u2027\u202f\u205f\u2070", "\u200a\u2010\u2027\u202f\u205f\u2070"},
      {"no UTF-8", "a\xff\xfe", "a\\xff\\xfe"},
      {"cut off", "a\xe2\x82", "a\\xe2\\x82"},
      {"overlong", "\xc0\xaf", "\\xc0\\xaf"},
      {"lone surrogate", "\xed\xa0\x80", "\\xed\\xa0\\x80"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(Printable(row.bytes), row.shown);
    EXPECT_EQ(Quoted(row.bytes), std::string("'").append(row.shown).append("'"));
  }
}

TEST(Text, ColumnsAreCodePoints) {
  EXPECT_EQ(Columns(""), 0U);
  EXPECT_EQ(Columns("abc"), 3U);
  EXPECT_EQ(Columns("\u00e4\u20ac\U0001F600"), 3U);
}

// What bash makes of the word.
std::string FromShell(const std::string& word) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "script", "printf %s " + word);
  FILE* shell = ::popen(("bash " + std::filesystem::path(folder / "script").string()).c_str(), "r");
  std::string text;
  for (int letter = std::fgetc(shell); letter != EOF; letter = std::fgetc(shell)) {
    text += static_cast<char>(letter);
  }
  ::pclose(shell);
  return text;
}

TEST(ShellWord, GivesAShellTheBytes) {
  for (const char* bytes : {"/usr/share/dotnet", "/a b", "it's", "", "-x", "$HOME", "a\\b", "*", "\"q\"", "\u00e4", "~",
                            "a\r'\\b", "caf\xe9 \\",
                            "\x01"
                            "1"}) {
    EXPECT_EQ(FromShell(ShellWord(bytes)), bytes) << ShellWord(bytes);
  }
}

TEST(ShellWord, IsPlainWhereNothingNeedsQuotes) {
  EXPECT_EQ(ShellWord("/usr/share/dotnet-6.0"), "/usr/share/dotnet-6.0");
  EXPECT_EQ(ShellWord("/a b"), "'/a b'");
  EXPECT_EQ(ShellWord("it's"), "'it'\\''s'");
}

TEST(ShellWord, ShowsWhatCannotBeSeen) {
  EXPECT_EQ(ShellWord("a\r'\\"), "$'a\\r\\'\\\\'");
  EXPECT_EQ(ShellWord("caf\xe9"), "$'caf\\xe9'");
}

}  // namespace
}  // namespace doctor
