#include "doctor/examine/framework_version.h"

#include <gtest/gtest.h>

#include <array>

namespace doctor {
namespace {

TEST(FrameworkVersion, ThreeNumbersAndWhatSemanticVersioningPermitsAreRead) {
  const auto version = FrameworkVersion::Parse("6.1.36");
  ASSERT_TRUE(version);
  EXPECT_EQ(version->Major(), 6U);
  EXPECT_EQ(version->Minor(), 1U);
  EXPECT_EQ(version->Patch(), 36U);
  EXPECT_FALSE(version->IsPrerelease());

  for (const char* text : {"0.0.0", "7.0.0-rc.2", "6.0.1-RC", "6.0.1+build.01", "6.0.0-rc.1+b", "6.0.0-a-b.0"}) {
    EXPECT_TRUE(FrameworkVersion::Parse(text)) << text;
  }
}

TEST(FrameworkVersion, OtherTextsAreNone) {
  for (const char* text :
       {"",         "6",         "6.0",    "6.0.0.0",  "v6.0.0",          " 6.0.0", "6.0.0 ",   "06.0.0",
        "6.00.0",   "6.0.01",    "6..0",   "6.0.x",    "6.0.99999999999", "6.0.0-", "6.0.0-01", "6.0.0-a..b",
        "6.0.0-a.", "6.0.0-a_b", "6.0.0+", "6.0.0-+b", "-6.0.0",          "backup"}) {
    EXPECT_FALSE(FrameworkVersion::Parse(text)) << text;
  }
}

TEST(FrameworkVersion, NumbersComeFirstThenPrereleasesPartByPart) {
  constexpr auto kInOrder = std::to_array<const char*>(
      {"5.9.9", "6.0.0-alpha", "6.0.0-alpha.1", "6.0.0-preview.9", "6.0.0-preview.10", "6.0.0-preview.10.1",
       "6.0.0-preview.x", "6.0.0-rc.1", "6.0.0", "6.0.0+b", "6.0.2", "6.0.10", "6.1.0", "10.0.0"});
  for (std::size_t at = 1; at < kInOrder.size(); ++at) {
    EXPECT_LT(*FrameworkVersion::Parse(kInOrder.at(at - 1)), *FrameworkVersion::Parse(kInOrder.at(at)))
        << kInOrder.at(at);
  }
  EXPECT_EQ(*FrameworkVersion::Parse("6.0.1-rc.1"), *FrameworkVersion::Parse("6.0.1-rc.1"));
}

}  // namespace
}  // namespace doctor
