#include "foundation/code_unit_less.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace tov {
namespace {

// Out of line: of literals the compiler sees the size, and warns of reads that their size rules out.
[[gnu::noinline]] bool Less(const std::u16string& a, const std::u16string& b) {
  return CodeUnitLess()(a, b);
}

TEST(CodeUnitLess, IsTheOrderOfPlainComparisonForTextsThatDifferAnywhere) {
  std::vector<std::u16string> texts{u"", u"a", u"A", u"B"};
  for (std::size_t length = 1; length <= 13; ++length) {
    const std::u16string same(length, u'k');
    texts.push_back(same);
    for (std::size_t place = 0; place < length; ++place) {
      for (const char16_t unit : {u'\0', u'j', u'l', char16_t{0x0100}, char16_t{0x6B00}, char16_t{0xD800}, u'\uFFFF'}) {
        texts.push_back(same);
        texts.back()[place] = unit;
      }
    }
  }

  for (const std::u16string& a : texts) {
    for (const std::u16string& b : texts) {
      ASSERT_EQ(CodeUnitLess()(a, b), std::less<>()(a, b)) << testing::PrintToString(a) << testing::PrintToString(b);
    }
  }
}

TEST(CodeUnitLess, TheFirstOfSeveralDifferencesCounts) {
  EXPECT_TRUE(Less(u"abcdZYXW", u"abceAAAA"));
  EXPECT_FALSE(Less(u"abceAAAA", u"abcdZYXW"));
  EXPECT_TRUE(Less(u"bZ", u"ca"));
}

TEST(CodeUnitLess, CapitalsComeBeforeSmallLettersAndAPrefixFirst) {
  EXPECT_TRUE(Less(u"B", u"a"));
  EXPECT_TRUE(Less(u"DotnetRoot", u"DotnetRootFolder"));
  EXPECT_FALSE(Less(u"DotnetRoot", u"DotnetRoot"));
}

}  // namespace
}  // namespace tov
