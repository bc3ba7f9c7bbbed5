#include "foundation/char_converters.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/foundation/utf_table.h"

namespace tov::text {
namespace {

using detail::StrictUtf16CharConverter;
using detail::StrictUtf8CharConverter;
using Utf16CharConverter = detail::Utf16CharConverterBase<char16_t>;

// While a constant is computed nothing may be read that is not there.
static_assert(!StrictUtf8CharConverter::Read("\x80") && !StrictUtf8CharConverter::Read("\xF4\x90\x80\x80"));
static_assert(!StrictUtf8CharConverter::Read({"\xE2\x82", 2}) && !Utf8CharConverter::Read({"\xF0\x9F\x98", 3}));
static_assert(StrictUtf8CharConverter::Read("\xC3\xA9")->value == 0xE9);
static_assert(!StrictUtf16CharConverter::Read({u"\xD83D", 1}) && Utf16CharConverter::Read({u"\xD83D", 1}));

template <typename Converter>
auto Written(char32_t value) {
  std::basic_string<typename Converter::CharType> out(Converter::Length(value), 'x');
  const auto* end = Converter::Write(value, out.data());
  EXPECT_EQ(end, out.data() + out.size()) << "code point " << static_cast<unsigned>(value);
  return out;
}

// Behind each text stands more, which must not be looked at.
template <typename Converter, typename Text>
bool Reads(const Text& text, char32_t value) {
  const Text whole = text + text;
  const auto read = Converter::Read(whole);
  return read && read->value == value && read->length == text.size();
}

TEST(CharConverters, EveryCodePointIsWrittenAsTheStandardsTableSays) {
  char32_t expected = 0;

  tests::ForEachWellFormed([&](char32_t value, const std::string& utf8) {
    expected += expected == 0xD800 ? 0x800 : 0;
    ASSERT_EQ(value, expected++);
    ASSERT_EQ(Written<Utf8CharConverter>(value), utf8) << static_cast<unsigned>(value);
    ASSERT_EQ(Written<Utf16CharConverter>(value), tests::Utf16Of(value)) << static_cast<unsigned>(value);
  });

  EXPECT_EQ(expected, 0x110000U);
}

TEST(CharConverters, EveryCodePointIsReadByTheLenientAndTheStrict) {
  tests::ForEachWellFormed([](char32_t value, const std::string& utf8) {
    ASSERT_TRUE(Reads<Utf8CharConverter>(utf8, value)) << static_cast<unsigned>(value);
    ASSERT_TRUE(Reads<StrictUtf8CharConverter>(utf8, value)) << static_cast<unsigned>(value);
    ASSERT_TRUE(Reads<Utf16CharConverter>(tests::Utf16Of(value), value)) << static_cast<unsigned>(value);
    ASSERT_TRUE(Reads<StrictUtf16CharConverter>(tests::Utf16Of(value), value)) << static_cast<unsigned>(value);
  });
}

TEST(CharConverters, ALoneSurrogateIsACodePointForTheLenientOnly) {
  for (char32_t unit = 0xD800; unit <= 0xDFFF; ++unit) {
    const std::u16string lone(1, static_cast<char16_t>(unit));
    const std::string utf8 = tests::Utf8OfSurrogate(lone[0]);

    ASSERT_EQ(Written<Utf8CharConverter>(unit), utf8) << static_cast<unsigned>(unit);
    ASSERT_TRUE(Reads<Utf8CharConverter>(utf8, unit)) << static_cast<unsigned>(unit);
    ASSERT_FALSE(StrictUtf8CharConverter::Read(utf8)) << static_cast<unsigned>(unit);
    ASSERT_EQ(Written<Utf16CharConverter>(unit), lone) << static_cast<unsigned>(unit);
    for (const std::u16string& behind : {std::u16string(), std::u16string(u"a"), std::u16string(1, char16_t{0xD800})}) {
      const auto read = Utf16CharConverter::Read(lone + behind);
      ASSERT_TRUE(read && read->value == unit && read->length == 1) << static_cast<unsigned>(unit);
      ASSERT_FALSE(StrictUtf16CharConverter::Read(lone + behind)) << static_cast<unsigned>(unit);
    }
  }
}

// Every pair of bytes, and each with what completes it, so that every lead byte meets every second byte.
TEST(CharConverters, TheStrictReaderTakesWhatTheStandardsTableHasAndNothingElse) {
  for (unsigned first = 0; first <= 0xFF; ++first) {
    for (unsigned second = 0; second <= 0xFF; ++second) {
      for (const std::string_view tail : {"", "\x80", "\xBF", "a", "\x80\x80", "\xBF\xBF", "\x80z", "\xC0\x80"}) {
        const std::string text = std::string{static_cast<char>(first), static_cast<char>(second)}.append(tail);
        const auto read = StrictUtf8CharConverter::Read(text);

        bool expected = false;
        for (std::size_t length = 1; length <= text.size(); ++length) {
          const bool well_formed = tests::IsOneWellFormedSequence(text.substr(0, length));
          expected |= well_formed;
          ASSERT_EQ(read && read->length == length, well_formed) << std::hex << first << " " << second;
        }
        ASSERT_EQ(read.has_value(), expected) << std::hex << first << " " << second;
      }
    }
  }
}

TEST(CharConverters, TheLenientReaderLooksAtLeadBytesAndLengthsOnly) {
  for (unsigned lead = 0; lead <= 0xFF; ++lead) {
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC0 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF8 ? 4
                                             : 0;
    const bool above = lead >= 0xF5 && lead < 0xF8;
    const std::string text{static_cast<char>(lead), 'A', 'B', 'C'};
    for (std::size_t size = 1; size <= text.size(); ++size) {
      const auto read = Utf8CharConverter::Read(text.substr(0, size));

      ASSERT_EQ(read.has_value(), length != 0 && size >= length && !above) << std::hex << lead << " of " << size;
      ASSERT_TRUE(!read || read->length == length) << std::hex << lead << " of " << size;
    }
  }
}

TEST(CharConverters, TheLenientReaderTakesSixBitsOfEachByteBehindTheLead) {
  for (const char32_t byte : {0x00U, 0x3FU, 0x40U, 0x7FU, 0x80U, 0xBFU, 0xC0U, 0xFFU}) {
    const std::string text{'\xC3', static_cast<char>(byte)};
    const auto read = Utf8CharConverter::Read(text);

    ASSERT_TRUE(read);
    EXPECT_EQ(read->value, 3U * 64 + byte % 64) << static_cast<unsigned>(byte);
  }
}

TEST(CharConverters, SurrogatesAreRecognisedUpToTheirEdges) {
  struct Row {
    char32_t value;
    bool high;
    bool low;
  };
  for (const Row& row :
       {Row{0xD7FF, false, false}, Row{0xD800, true, false}, Row{0xDBFF, true, false}, Row{0xDC00, false, true},
        Row{0xDFFF, false, true}, Row{0xE000, false, false}, Row{0x1D800, false, false}, Row{0x1DC00, false, false}}) {
    EXPECT_EQ(detail::IsHighSurrogate(row.value), row.high) << static_cast<unsigned>(row.value);
    EXPECT_EQ(detail::IsLowSurrogate(row.value), row.low) << static_cast<unsigned>(row.value);
    EXPECT_EQ(detail::IsSurrogate(row.value), row.high || row.low) << static_cast<unsigned>(row.value);
  }
}

}  // namespace
}  // namespace tov::text
