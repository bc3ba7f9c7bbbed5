#include "foundation/convert_to_container.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "tests/foundation/utf_table.h"

namespace tov::text {
namespace {

constexpr int kInvalidArgument = static_cast<int>(0x80000046U);

static_assert(
    std::is_same_v<Utf16ToUtf8, tov::detail::ConvertToContainer<text::detail::Utf16CharConverterBase<char16_t>,
                                                                text::Utf8CharConverter>>);
static_assert(noexcept(Utf16ToUtf8::Do({}, std::declval<NarrowString&>(), 0)));

TEST(ConvertToContainer, EveryCodePointIsConvertedBothWays) {
  std::string all_utf8;
  std::u16string all_utf16;
  tests::ForEachWellFormed([&](char32_t value, const std::string& utf8) {
    all_utf8 += utf8;
    all_utf16 += tests::Utf16Of(value);
  });

  NarrowString narrow;
  ASSERT_EQ(Utf16ToUtf8::Do(all_utf16, narrow, 0), 0);
  EXPECT_TRUE(narrow == all_utf8);
  WideString wide;
  ASSERT_EQ(Utf8ToUtf16::Do(all_utf8, wide, 0), 0);
  EXPECT_TRUE(wide == all_utf16);
}

// ASCII is taken several units at a time, so what is not stands at every place of texts of every small length.
TEST(ConvertToContainer, TheFirstCharacterBeyondAsciiMayStandAnywhere) {
  for (const char16_t beyond : {u'\u0080', u'\u00E9', u'\u0100', u'\u8000', u'\uFF00'}) {
    const std::u16string wide(1, beyond);
    NarrowString bytes;
    ASSERT_EQ(Utf16ToUtf8::Do(wide, bytes, 0), 0);
    for (std::size_t length = 0; length <= 20; ++length) {
      for (std::size_t place = 0; place <= length; ++place) {
        const std::u16string text = std::u16string(place, u'a') + wide + std::u16string(length - place, u'\u007F');
        const std::string utf8 = std::string(place, 'a') + bytes + std::string(length - place, '\x7F');
        NarrowString narrow = "/";
        WideString back = u"/";
        ASSERT_EQ(Utf16ToUtf8::Do(text, narrow, 1), 0);
        ASSERT_EQ(Utf8ToUtf16::Do(utf8, back, 1), 0);
        ASSERT_TRUE(narrow == "/" + utf8 && back == u"/" + text) << place << " of " << length;
      }
    }
  }
}

TEST(ConvertToContainer, MalformedUtf8IsSeenBehindAsciiOfAnyLength) {
  for (std::size_t length = 0; length <= 20; ++length) {
    WideString wide = u"as it was";
    EXPECT_EQ(Utf8ToUtf16::Do(std::string(length, 'a') + "\x80", wide, 0), kInvalidArgument) << length;
    EXPECT_EQ(wide, u"as it was") << length;
  }
}

TEST(ConvertToContainer, EveryLoneSurrogateBecomesThreeBytesAndComesBack) {
  for (unsigned unit = 0xD800; unit <= 0xDFFF; ++unit) {
    const WideString lone(1, static_cast<char16_t>(unit));

    NarrowString narrow;
    ASSERT_EQ(Utf16ToUtf8::Do(lone, narrow, 0), 0);
    ASSERT_EQ(narrow, tests::Utf8OfSurrogate(lone[0]));
    WideString back;
    ASSERT_EQ(Utf8ToUtf16::Do(narrow, back, 0), 0);
    ASSERT_EQ(back, lone);
  }
}

TEST(ConvertToContainer, TheLoneUnitD800BecomesEDA080) {
  NarrowString narrow;

  EXPECT_EQ(Utf16ToUtf8::Do(WideString(1, char16_t{0xD800}), narrow, 0), 0);

  EXPECT_EQ(narrow, "\xED\xA0\x80");
}

TEST(ConvertToContainer, AHighSurrogateAtTheEndIsNoError) {
  NarrowString narrow;

  EXPECT_EQ(Utf16ToUtf8::Do(WideString{u'a', char16_t{0xDBFF}}, narrow, 0), 0);

  EXPECT_EQ(narrow, "a\xED\xAF\xBF");
}

TEST(ConvertToContainer, SurrogatesInTheWrongOrderStayApart) {
  NarrowString narrow;

  EXPECT_EQ(
      Utf16ToUtf8::Do(WideString{char16_t{0xDE00}, char16_t{0xD83D}, char16_t{0xD83D}, char16_t{0xDE00}}, narrow, 0),
      0);

  EXPECT_EQ(narrow, "\xED\xB8\x80\xED\xA0\xBD\xF0\x9F\x98\x80");
}

TEST(ConvertToContainer, APairIsFourBytes) {
  NarrowString narrow;
  WideString wide;

  EXPECT_EQ(Utf16ToUtf8::Do(WideString{char16_t{0xD83D}, char16_t{0xDE00}}, narrow, 0), 0);
  EXPECT_EQ(Utf8ToUtf16::Do("\xF0\x9F\x98\x80", wide, 0), 0);

  EXPECT_EQ(narrow, "\xF0\x9F\x98\x80");
  EXPECT_EQ(wide, (WideString{char16_t{0xD83D}, char16_t{0xDE00}}));
}

TEST(ConvertToContainer, MalformedUtf8IsAnInvalidArgumentOrLenientlyTaken) {
  for (const auto& row : tests::kMalformed) {
    WideString wide = u"before";
    const int result = Utf8ToUtf16::Do(row.bytes, wide, 0);

    EXPECT_EQ(result, row.lenient ? 0 : kInvalidArgument) << row.name;
    EXPECT_EQ(wide, row.lenient.value_or(u"before")) << row.name;
  }
}

TEST(ConvertToContainer, ALoneContinuationAndAValueAboveTheLastAreRefusedAndOverlongNulIsTaken) {
  WideString wide;

  EXPECT_EQ(Utf8ToUtf16::Do("\x80", wide, 0), kInvalidArgument);
  EXPECT_EQ(Utf8ToUtf16::Do("\xF4\x90\x80\x80", wide, 0), kInvalidArgument);
  EXPECT_EQ(Utf8ToUtf16::Do("\xC0\x80", wide, 0), 0);

  EXPECT_EQ(wide, WideString(1, u'\0'));
}

TEST(ConvertToContainer, WhatStandsBeforeTheOffsetIsKept) {
  NarrowString narrow = "/path/xyz";
  WideString wide = u"/path/xyz";

  EXPECT_EQ(Utf16ToUtf8::Do(u"\u00E9", narrow, 6), 0);
  EXPECT_EQ(Utf8ToUtf16::Do("\xC3\xA9", wide, 6), 0);

  EXPECT_EQ(narrow, "/path/\xC3\xA9");
  EXPECT_EQ(wide, u"/path/\u00E9");
}

TEST(ConvertToContainer, AnOffsetBehindTheEndIsReachedWithNuls) {
  NarrowString narrow = "a";

  EXPECT_EQ(Utf16ToUtf8::Do(u"b", narrow, 3), 0);

  EXPECT_EQ(narrow, std::string("a\0\0b", 4));
}

TEST(ConvertToContainer, AnEmptyRangeCutsTheOutputAtTheOffset) {
  NarrowString narrow = "kept and not";

  EXPECT_EQ(Utf16ToUtf8::Do({}, narrow, 4), 0);

  EXPECT_EQ(narrow, "kept");
}

TEST(ConvertToContainer, AMalformedRangeLeavesTheOutputAsItWas) {
  WideString wide = u"as it was";

  EXPECT_EQ(Utf8ToUtf16::Do("fine until \xFF", wide, 2), kInvalidArgument);

  EXPECT_EQ(wide, u"as it was");
}

TEST(ConvertToContainer, NulsAreCharacters) {
  NarrowString narrow;
  WideString wide;

  EXPECT_EQ(Utf16ToUtf8::Do(std::u16string_view(u"a\0b", 3), narrow, 0), 0);
  EXPECT_EQ(Utf8ToUtf16::Do(std::string_view("a\0b", 3), wide, 0), 0);

  EXPECT_EQ(narrow, std::string("a\0b", 3));
  EXPECT_EQ(wide, std::u16string(u"a\0b", 3));
}

TEST(ConvertToContainer, ALengthThatNoStringCanHaveIsOutOfMemory) {
  NarrowString narrow = "as it was";

  EXPECT_EQ(Utf16ToUtf8::Do(u"a", narrow, narrow.max_size()), static_cast<int>(0x80000041U));

  EXPECT_EQ(narrow, "as it was");
}

TEST(ConvertToContainer, AnOffsetThatWrapsAroundWithTheTextIsOutOfMemory) {
  for (const std::size_t offset : {SIZE_MAX, SIZE_MAX - 1}) {
    NarrowString narrow = "as it was";
    WideString wide = u"as it was";

    EXPECT_EQ(Utf16ToUtf8::Do(u"ab", narrow, offset), static_cast<int>(0x80000041U));
    EXPECT_EQ(Utf8ToUtf16::Do("ab", wide, offset), static_cast<int>(0x80000041U));

    EXPECT_EQ(narrow, "as it was");
    EXPECT_EQ(wide, u"as it was");
  }
}

}  // namespace
}  // namespace tov::text
