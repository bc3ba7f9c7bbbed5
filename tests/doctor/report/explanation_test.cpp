#include "doctor/report/explanation.h"

#include <gtest/gtest.h>

#include "doctor/judge/findings.h"
#include "doctor/report/page.h"

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

TEST(Explanation, AllCodesStandInLinesOfTheirOwn) {
  EXPECT_TRUE(AllCodes().starts_with("settings-missing\nsettings-unreadable\n")) << AllCodes();
}

}  // namespace
}  // namespace doctor
