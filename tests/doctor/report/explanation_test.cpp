#include "doctor/report/explanation.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "doctor/judge/findings.h"
#include "doctor/report/page.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

TEST(Explanation, SaysWhatTheCodeStandsForHowItComesAboutAndWhatMendsIt) {
  EXPECT_EQ(Explanation("carriage-return-at-end", kPageWidth),
            "carriage-return-at-end\n"
            "  The path in the settings ends with a carriage return.\n"
            "  The settings were saved with Windows line ends, so VALUE is looked for.\n"
            "  Windows ends a line with two characters, and the first of them stays in the value.\n"
            "  To mend it:  sed -i 's/\\r$//' FILE\n");
}

TEST(Explanation, ThereIsOneForEveryFindingAndNoBraceIsLeft) {
  for (const FindingText& row : kFindings) {
    const auto text = Explanation(row.code, kPageWidth);

    ASSERT_TRUE(text) << row.code;
    EXPECT_EQ(text->find_first_of("{}"), std::string::npos) << *text;
    EXPECT_GT(text->size(), row.code.size() + row.cause.size() / 2) << *text;
    EXPECT_EQ(text->find(" .\n"), std::string::npos) << *text;
  }
}

// After a wanted change: RENEW_GOLDEN=1, and the difference is to be read before it is committed.
TEST(GoldenExplanations, AreAsTheyWere) {
  constexpr std::size_t kOneLineForEachPart = 1000;
  const auto file = std::filesystem::path(SOURCE_FOLDER) / "tests/doctor/report/explanations.txt";
  std::string text;
  for (const FindingText& row : kFindings) {
    text.append(Explanation(row.code, kOneLineForEachPart).value_or("none\n"));
  }

  if (const char* renew = std::getenv("RENEW_GOLDEN"); renew != nullptr && *renew != '\0') {
    tests::WriteFile(file, text);
  }

  EXPECT_EQ(tests::ReadFile(file), text);
}

TEST(Explanation, WhatOnlyAReportCanSayIsLeftOut) {
  const auto text = Explanation("ends-while-loading", kPageWidth);

  ASSERT_TRUE(text);
  EXPECT_EQ(text->find("OUTPUT"), std::string::npos) << *text;
}

TEST(Explanation, ThereIsNoneForAnUnknownCode) {
  EXPECT_EQ(Explanation("cut", kPageWidth), std::nullopt);
  EXPECT_EQ(Explanation("", kPageWidth), std::nullopt);
}

TEST(Explanation, TheNearestCodesAreThoseThatAreSpeltAlike) {
  EXPECT_EQ(NearestCodes("cut-shrot").front(), "cut-short");
  EXPECT_EQ(NearestCodes("blankatend").front(), "blank-at-end");
  EXPECT_EQ(NearestCodes("").size(), 3U);
}

// What is added, left out and replaced counts the same; of codes that are equally near the first in the list wins.
TEST(Explanation, TheNearestCodesComeInOrder) {
  using Codes = std::vector<std::string_view>;

  EXPECT_EQ(NearestCodes("blank-at"), (Codes{"blank-at-end", "blank-at-start", "no-root"}));
  EXPECT_EQ(NearestCodes("broken"), (Codes{"broken-file", "host-file-broken", "named-file-broken"}));
  EXPECT_EQ(NearestCodes("filesize-limited"), (Codes{"file-size-limited", "data-limited", "stack-limited"}));
  EXPECT_EQ(NearestCodes("no-versions"), (Codes{"no-version", "no-version-loads", "no-root"}));
}

TEST(Explanation, AWordOfACodeFindsIt) {
  using Codes = std::vector<std::string_view>;

  EXPECT_EQ(NearestCodes("icu").front(), "no-icu");
  EXPECT_EQ(NearestCodes("memory").front(), "no-memory-files");
  EXPECT_EQ(NearestCodes("files-limited"), (Codes{"open-files-limited", "file-size-limited", "data-limited"}));
}

TEST(Explanation, AllCodesStandInLinesOfTheirOwn) {
  EXPECT_TRUE(AllCodes().starts_with("settings-missing\nsettings-unreadable\n")) << AllCodes();
}

}  // namespace
}  // namespace doctor
