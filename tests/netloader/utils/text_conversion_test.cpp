#include "netloader/utils/text_conversion.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "tests/foundation/utf_table.h"

namespace netloader::utils {
namespace {

// The same units, each as one wide character.
std::wstring Wide(const std::u16string& units) {
  return {units.begin(), units.end()};
}

template <typename Exception, typename Act>
std::string FailureText(const Act& act) {
  try {
    act();
    return "none";
  } catch (const Exception& failure) {
    return failure.what();
  }
}

TEST(TextConversion, EveryCodePointIsConvertedBothWays) {
  std::string utf8;
  std::wstring wide;
  tests::ForEachWellFormed([&](char32_t value, const std::string& bytes) {
    if (value != 0) {
      utf8 += bytes;
      wide += Wide(tests::Utf16Of(value));
    }
  });

  EXPECT_TRUE(ToString(wide.c_str(), true) == utf8);
  EXPECT_TRUE(ToWString(utf8.c_str(), true) == wide);
}

TEST(TextConversion, APairOfWideCharactersIsOneSequenceOfFourBytes) {
  EXPECT_EQ(ToString(std::wstring{0xD83D, 0xDE00}.c_str(), true), "\xF0\x9F\x98\x80");
  EXPECT_EQ(ToWString("\xF0\x9F\x98\x80", true), (std::wstring{0xD83D, 0xDE00}));
}

TEST(TextConversion, ANullTextIsEmptyOrThrowsWhenAskedToWithAMisspelling) {
  EXPECT_EQ(ToString(nullptr, false), "");
  EXPECT_EQ(ToWString(nullptr, false), L"");
  EXPECT_EQ(FailureText<std::runtime_error>([] { ToString(nullptr, true); }),
            "Failed co convert null wstring to string.");
  EXPECT_EQ(FailureText<std::runtime_error>([] { ToWString(nullptr, true); }),
            "Failed co convert null string to wstring.");
}

TEST(TextConversion, AnEmptyTextIsEmpty) {
  EXPECT_EQ(ToString(L"", true), "");
  EXPECT_EQ(ToWString("", true), L"");
}

TEST(TextConversion, TheTextEndsAtItsNul) {
  EXPECT_EQ(ToString(L"ab\0c", true), "ab");
  EXPECT_EQ(ToWString("ab\0c", true), L"ab");
}

TEST(TextConversion, WideTextThatDoesNotConvertIsARangeError) {
  for (const std::wstring& text : {std::wstring{0xDC00}, std::wstring{0xDFFF, 'a'}, std::wstring{'a', 0xD800, 'b'},
                                   std::wstring{0xD800, 0xD800, 'a'}, std::wstring{0x110000},
                                   std::wstring{'a', static_cast<wchar_t>(0xFFFFFFFF)}}) {
    EXPECT_EQ(FailureText<std::range_error>([&] { ToString(text.c_str(), false); }), "wstring_convert::to_bytes")
        << testing::PrintToString(text);
  }
}

TEST(TextConversion, BytesThatDoNotConvertAreARangeError) {
  for (const char* bytes : {"\x80", "a\xBF", "\xC0\x80", "\xC3(", "\xE2(\x80", "\xE0\x80\x80", "\xF0\x80\x80\x80",
                            "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFE", "\xFF", "ab\xFFxyz"}) {
    EXPECT_EQ(FailureText<std::range_error>([&] { ToWString(bytes, false); }), "wstring_convert::from_bytes")
        << testing::PrintToString(std::string(bytes));
  }
}

// The library's facet calls neither an error, and its verdict is ours.
TEST(TextConversion, AnIncompleteEndIsLeftOut) {
  EXPECT_EQ(ToString(std::wstring{'a', 0xD83D}.c_str(), true), "a");
  for (const char* bytes : {"ab\xC3", "ab\xE2\x82", "ab\xF0", "ab\xF0\x9F\x98"}) {
    EXPECT_EQ(ToWString(bytes, true), L"ab") << testing::PrintToString(std::string(bytes));
  }
}

TEST(TextConversion, AWholeCodePointInOneWideCharacterIsTakenTooAsIsASurrogateInUtf8) {
  EXPECT_EQ(ToString(std::wstring{0x1F600}.c_str(), true), "\xF0\x9F\x98\x80");
  EXPECT_EQ(ToWString("\xED\xA0\xBD", true), std::wstring{0xD83D});
}

}  // namespace
}  // namespace netloader::utils
