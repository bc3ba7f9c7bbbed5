#include "netloader/netloaderhostfxr/src/version_order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <random>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

#include "netloader/netloaderhostfxr/src/loadermodule.h"

namespace netloader {
namespace {

using tov::WideString;
using Versions = std::vector<WideString>;

const WideString kPrefix = u"6.0.";

struct Tail {
  const char* name;
  WideString tail;
  long number;
};

void ExpectNumbers(const std::vector<Tail>& rows) {
  for (const Tail& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(VersionNumber(kPrefix + row.tail, kPrefix), row.number);
  }
}

TEST(VersionNumber, IsWhatFollowsThePrefix) {
  ExpectNumbers({
      {"one digit", u"9", 9},
      {"several", u"36", 36},
      {"the largest", u"9223372036854775807", LONG_MAX},
      {"beyond the largest", u"9223372036854775808", LONG_MAX},
      {"beyond the smallest", u"-9223372036854775809", LONG_MIN},
  });
}

TEST(VersionNumber, IsReadWithBaseZeroOnPurposeSoThat08Is0And010Is8And0x10Is16) {
  ExpectNumbers({
      {"octal ends before 8", u"08", 0},
      {"octal", u"010", 8},
      {"octal up to a 9", u"0179", 15},
      {"hexadecimal", u"0x10", 16},
      {"hexadecimal in capitals", u"0X1F", 31},
      {"no hexadecimal digit", u"0xg", 0},
  });
}

TEST(VersionNumber, IsReadUpToTheFirstCharacterThatDoesNotFit) {
  ExpectNumbers({
      {"a preview", u"5-preview.7", 5},
      {"a fourth part", u"36.1", 36},
      {"a NUL", WideString(u"1\0002", 3), 1},
      {"other digits than the ASCII ones", u"\u0665", 0},
      {"an emoji", u"7\U0001F600", 7},
  });
}

TEST(VersionNumber, TakesBlanksAndASignAndIs0WithoutAnyDigit) {
  ExpectNumbers({
      {"blanks", u" \t7", 7},
      {"plus", u"+7", 7},
      {"minus", u"-7", -7},
      {"nothing", u"", 0},
      {"letters", u"preview", 0},
      {"two signs", u"--7", 0},
  });
}

TEST(VersionNumber, RefusesANameThatIsShorterThanThePrefix) {
  try {
    VersionNumber(u"6.0", kPrefix);
    FAIL() << "nothing was thrown";
  } catch (const std::out_of_range& failure) {
    EXPECT_STREQ(failure.what(), "tov::basic_string_t::append()");
  }
}

TEST(VersionNumber, RefusesATailThatIsNotWellFormed) {
  EXPECT_THROW(VersionNumber(kPrefix + WideString(1, u'\xd800'), kPrefix), std::bad_cast);
}

TEST(NewestFirst, TenComesBeforeNine) {
  EXPECT_EQ(NewestFirst({u"6.0.9", u"6.0.10", u"6.0.1"}, kPrefix), (Versions{u"6.0.10", u"6.0.9", u"6.0.1"}));
}

TEST(NewestFirst, KeepsAVersionThatIsThereTwiceTwice) {
  EXPECT_EQ(NewestFirst({u"6.0.9", u"6.0.10", u"6.0.9"}, kPrefix), (Versions{u"6.0.10", u"6.0.9", u"6.0.9"}));
}

TEST(NewestFirst, AnEmptyPrefixOrdersByTheFirstNumber) {
  EXPECT_EQ(NewestFirst({u"6.0.36", u"10.0.1", u"7.0.0"}, u""), (Versions{u"10.0.1", u"7.0.0", u"6.0.36"}));
}

TEST(NewestFirst, ReadsNoNumberWhenThereIsNothingToCompare) {
  const WideString malformed = kPrefix + WideString(1, u'\xd800');

  EXPECT_EQ(NewestFirst({}, kPrefix), Versions());
  EXPECT_EQ(NewestFirst({malformed}, kPrefix), Versions{malformed});
  EXPECT_EQ(NewestFirst({u"6"}, kPrefix), Versions{u"6"});
  EXPECT_THROW(NewestFirst({u"6.0.1", malformed}, kPrefix), std::bad_cast);
  EXPECT_THROW(NewestFirst({u"6.0.1", u"6"}, kPrefix), std::out_of_range);
}

TEST(NewestFirst, AgreesWithTheLoadersPredicate) {
  const LoaderModule loader(
      {.dotnetRootPath = {}, .dotnetVersionPrefix = kPrefix, .productRoot = {}, .environmentVariables = {}});
  const auto tails = std::to_array<WideString>({u"1", u"2", u"08", u"010", u"0x10", u"9", u"10", u"11", u"-1", u" 3",
                                                u"rc", u"", u"5-rc.1", u"36", u"99999999999999999999"});
  Versions versions;
  for (const WideString& tail : tails) {
    versions.push_back(kPrefix + tail);
  }
  std::mt19937 random(7);
  for (int round = 0; round < 50; ++round) {
    std::ranges::shuffle(versions, random);

    const Versions sorted = NewestFirst(versions, kPrefix);

    EXPECT_TRUE(std::ranges::is_permutation(sorted, versions));
    for (std::size_t i = 1; i < sorted.size(); ++i) {
      EXPECT_FALSE(loader.VersionSortPredicate(sorted[i], sorted[i - 1])) << "at " << i << " in round " << round;
    }
  }
}

Discovery Found(const Versions& versions) {
  Discovery discovery;
  discovery.fxr_folder = u"/fxr";
  for (const WideString& version : versions) {
    discovery.findings.push_back({version, VersionVerdict::kAccepted});
  }
  discovery.findings.push_back({u"6.0.99", VersionVerdict::kNoLibrary});
  return discovery;
}

TEST(TryNewestFirst, HandsOutTheAcceptedVersionsWithTheirLibrariesUntilOneIsTaken) {
  Versions tried;
  Versions paths;

  EXPECT_TRUE(TryNewestFirst(Found({u"6.0.9", u"6.0.10", u"6.0.8"}), kPrefix, u"lib", [&](auto& version, auto& path) {
    tried.push_back(version);
    paths.push_back(path);
    return version == u"6.0.9";
  }));

  EXPECT_EQ(tried, (Versions{u"6.0.10", u"6.0.9"}));
  EXPECT_EQ(paths, (Versions{u"/fxr/6.0.10/lib", u"/fxr/6.0.9/lib"}));
}

TEST(TryNewestFirst, IsFalseWhenNoneIsTaken) {
  EXPECT_FALSE(TryNewestFirst(Found({u"6.0.9"}), kPrefix, u"lib", [](auto&, auto&) { return false; }));
  EXPECT_FALSE(TryNewestFirst(Found({}), kPrefix, u"lib", [](auto&, auto&) { return true; }));
}

}  // namespace
}  // namespace netloader
