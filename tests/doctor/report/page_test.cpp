#include "doctor/report/page.h"

#include <gtest/gtest.h>

#include <sstream>

#include "doctor/judge/words/text.h"
#include "tests/support/text.h"

namespace doctor {
namespace {

using Lines = std::vector<std::string>;

Lines LinesOf(const std::string& text) {
  Lines lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

TEST(Page, TextIsBrokenBetweenWordsAndNeverInsideOfOne) {
  EXPECT_EQ(Wrapped("", 5), (Lines{""}));
  EXPECT_EQ(Wrapped("12345", 5), (Lines{"12345"}));
  EXPECT_EQ(Wrapped("12345 7", 5), (Lines{"12345", "7"}));
  EXPECT_EQ(Wrapped("12 45 78", 5), (Lines{"12 45", "78"}));
  EXPECT_EQ(Wrapped("123456789ab", 5), (Lines{"123456789ab"}));
  EXPECT_EQ(Wrapped("12   67", 5), (Lines{"12  ", "67"}));
  EXPECT_EQ(Wrapped(" 23456", 5), (Lines{" 23456"}));
  EXPECT_EQ(Wrapped("12 /456789 12", 5), (Lines{"12", "/456789", "12"}));
  EXPECT_EQ(Wrapped("12345 ", 5), (Lines{"12345"}));
  EXPECT_EQ(Wrapped("\u00e4\u00e4\u00e4 \u00e4", 3), (Lines{"\u00e4\u00e4\u00e4", "\u00e4"}));
}

TEST(Page, NoLineIsLongerThanThePage) {
  const std::string word = tests::Repeated("x", 16);
  const std::string umlauts = tests::Repeated("\u00e4\u00e4 ", 1000);
  const std::string blanks = tests::Repeated(" ", 1000);
  const std::string sentence = tests::Repeated("words of many lengths ", 50);
  for (const std::string& text : {word, umlauts, blanks, sentence, " " + word, word + " a", std::string()}) {
    SCOPED_TRACE(text.substr(0, 20));
    for (const std::size_t width : {std::size_t{60}, kPageWidth, std::size_t{160}}) {
      Page page(false, width);

      page.Heading(text.substr(0, 50), text);
      page.Paragraph(text, 4);
      page.Table({{{text}, {text}, {text}}, {{"a"}, {text}, {"c"}}}, 2);

      for (const std::string& line : LinesOf(page.Text())) {
        EXPECT_LE(Columns(line), width) << line;
      }
    }
  }
}

TEST(Page, ALineMayTakeTheWholePage) {
  Page page(false);

  page.Paragraph(tests::Repeated("x", 96) + " yy", 4);
  page.Paragraph(tests::Repeated("x", 97), 4);

  EXPECT_EQ(LinesOf(page.Text()),
            (Lines{"    " + tests::Repeated("x", 96), "    yy", "    " + tests::Repeated("x", 97)}));
}

TEST(Page, ColumnsAreAlignedAndNothingFollowsTheLastWord) {
  Page page(false);

  page.Table({{{"a"}, {"bb"}, {"c"}}, {{"\u00e4\u00e4\u00e4"}, {"b"}, {""}}, {{""}, {""}, {"c"}}}, 2);

  EXPECT_EQ(LinesOf(page.Text()), (Lines{"  a    bb  c", "  \u00e4\u00e4\u00e4  b", "           c"}));
}

TEST(Page, ACellTooLongForItsColumnGoesOnBelow) {
  Page page(false);

  page.Table({{{tests::Repeated("a", 32) + " a"}, {tests::Repeated("b", 66) + " bbbb"}}}, 0);

  EXPECT_EQ(LinesOf(page.Text()), (Lines{tests::Repeated("a", 32) + "  " + tests::Repeated("b", 66),
                                         std::string("a").append(33, ' ').append("bbbb")}));
}

TEST(Page, AWordTooLongForItsColumnStandsWholeWithNothingBesideIt) {
  Page page(false);
  const std::string path = "/" + tests::Repeated("a", 120);
  const std::string below(34, ' ');

  page.Table({{{path}, {"what it is"}}, {{"b"}, {path}}, {{"c"}, {"here: " + path}}}, 0);

  EXPECT_EQ(LinesOf(page.Text()),
            (Lines{path, below + "what it is", "b", below + path, "c" + below.substr(1) + "here:", below + path}));
}

TEST(Page, ATableWithoutRowsIsNothing) {
  Page page(false);

  page.Table({}, 2);

  EXPECT_EQ(page.Text(), "");
}

TEST(Page, AHeadingStandsAfterAnEmptyLineWithItsSubjectBelow) {
  Page page(false);

  page.Heading("1. Settings", "/file");
  page.Heading("2. Runtime", "");

  EXPECT_EQ(page.Text(), "\n1. Settings\n  /file\n\n2. Runtime\n");
}

TEST(Page, ColoursAreThereOnlyWhenAskedForAndEndWhereTheirTextEnds) {
  struct Row {
    Paint paint;
    const char* color;
  };
  const Row rows[] = {{Paint::kStrong, "\033[1m"},
                      {Paint::kGood, "\033[32m"},
                      {Paint::kBad, "\033[31m"},
                      {Paint::kOdd, "\033[33m"},
                      {Paint::kFaint, "\033[2m"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.color + 1);
    Page colored(true);
    Page plain(false);

    colored.Paragraph("text", 2, row.paint);
    plain.Paragraph("text", 2, row.paint);

    EXPECT_EQ(colored.Text(), std::string("  ") + row.color + "text\033[0m\n");
    EXPECT_EQ(plain.Text(), "  text\n");
  }
  Page page(true);
  page.Paragraph("text", 0, Paint::kPlain);
  EXPECT_EQ(page.Text(), "text\n");
}

TEST(Page, ColoursDoNotCountAsColumns) {
  Page page(true);

  page.Table({{{"a", Paint::kGood}, {"b", Paint::kBad}}, {{"aa"}, {"b"}}}, 0);

  EXPECT_EQ(LinesOf(page.Text()), (Lines{"\033[32ma\033[0m   \033[31mb\033[0m", "aa  b"}));
}

}  // namespace
}  // namespace doctor
