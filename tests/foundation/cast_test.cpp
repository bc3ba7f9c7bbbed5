#include "foundation/cast.h"

#include <gtest/gtest.h>

#include <array>
#include <clocale>
#include <cwchar>
#include <optional>
#include <string>
#include <string_view>
#include <typeinfo>
#include <utility>

#include "tests/foundation/utf_table.h"

namespace tov::text {
namespace {

constexpr const char* kUtf8Locale = "C.UTF-8";

template <typename To, typename From>
concept CanCast = requires(From text) {
  Cast<To>(text);
};

static_assert(CanCast<std::string, std::u16string_view> && CanCast<WideString, std::string_view>);
static_assert(CanCast<std::string, std::string_view>);
static_assert(!CanCast<std::wstring, std::u16string_view> && !CanCast<std::wstring, std::string_view>,
              "a type without a conversion must be refused by the compiler, not by the linker");
static_assert(!CanCast<WideString, std::u16string_view>);

class ScopedLocale {
 public:
  explicit ScopedLocale(const char* name) : before_(std::setlocale(LC_ALL, nullptr)) {
    if (std::setlocale(LC_ALL, name) == nullptr) {
      ADD_FAILURE() << "no locale " << name;
    }
  }
  ScopedLocale(const ScopedLocale&) = delete;
  ScopedLocale& operator=(const ScopedLocale&) = delete;
  ~ScopedLocale() { std::setlocale(LC_ALL, before_.c_str()); }

 private:
  std::string before_;
};

template <typename To, typename From>
std::optional<To> TryCast(const From& text) {
  try {
    return Cast<To>(text);
  } catch (const std::bad_cast&) {
    return std::nullopt;
  }
}

// What the C library makes of one character. Both are its restartable functions; the cast's limit is U+10FFFF, while
// the C library also decodes what lies above.
std::optional<std::string> LibraryBytes(char32_t value) {
  std::array<char, 16> bytes{};
  std::mbstate_t state{};
  const std::size_t length = std::wcrtomb(bytes.data(), static_cast<wchar_t>(value), &state);
  return length == static_cast<std::size_t>(-1) ? std::nullopt : std::optional(std::string(bytes.data(), length));
}

std::optional<std::u16string> LibraryText(std::string_view bytes) {
  std::u16string text;
  while (!bytes.empty()) {
    wchar_t value = 0;
    std::mbstate_t state{};
    std::size_t length = std::mbrtowc(&value, bytes.data(), bytes.size(), &state);
    length = bytes[0] == '\0' ? 1 : length;
    if (length == 0 || length > bytes.size() || static_cast<char32_t>(value) > 0x10FFFF) {
      return std::nullopt;
    }
    text += tests::Utf16Of(static_cast<char32_t>(value));
    bytes.remove_prefix(length);
  }
  return text;
}

TEST(Cast, EveryCodePointIsConvertedBothWaysUnderEveryLocale) {
  std::string all_utf8;
  std::u16string all_utf16;
  tests::ForEachWellFormed([&](char32_t value, const std::string& utf8) {
    all_utf8 += utf8;
    all_utf16 += tests::Utf16Of(value);
  });

  for (const char* locale : {"C", kUtf8Locale}) {
    const ScopedLocale scoped(locale);
    EXPECT_TRUE(Cast<std::string>(all_utf16) == all_utf8) << locale;
    EXPECT_TRUE(Cast<WideString>(all_utf8) == all_utf16) << locale;
  }
}

TEST(Cast, EveryCharacterBecomesWhatTheCLibraryMakesOfItInAUtf8Locale) {
  const ScopedLocale scoped(kUtf8Locale);

  for (char32_t value = 1; value <= 0x10FFFF; ++value) {
    ASSERT_EQ(TryCast<std::string>(tests::Utf16Of(value)), LibraryBytes(value)) << static_cast<unsigned>(value);
  }
}

// All texts of one and two bytes; behind each lead byte and each second byte then third and fourth bytes from both
// sides of the edges of what they may be.
template <typename Visit>
void ForEachShortText(const Visit& visit) {
  for (unsigned first = 0; first <= 0xFF; ++first) {
    visit(std::string(1, static_cast<char>(first)));
    for (unsigned second = 0; second <= 0xFF; ++second) {
      const std::string two{static_cast<char>(first), static_cast<char>(second)};
      visit(two);
      for (const char third : {'\x00', '\x7F', '\x80', '\xBF', '\xC0'}) {
        if (first >= 0xE0) {
          visit(two + third);
        }
        for (const char fourth : {'\x7F', '\x80', '\xBF', '\xC0'}) {
          if (first >= 0xF0) {
            visit(two + third + fourth);
          }
        }
      }
    }
  }
}

TEST(Cast, EveryShortTextBecomesWhatTheCLibraryMakesOfItInAUtf8Locale) {
  const ScopedLocale scoped(kUtf8Locale);

  ForEachShortText([](const std::string& text) {
    ASSERT_EQ(TryCast<WideString>(text), LibraryText(text)) << testing::PrintToString(text);
  });
}

TEST(Cast, TheLocaleChangesNothing) {
  const auto all = [](const char* locale) {
    const ScopedLocale scoped(locale);
    std::string verdicts;
    for (const auto& row : tests::kMalformed) {
      verdicts += TryCast<WideString>(row.bytes) ? '+' : '-';
    }
    for (unsigned unit = 1; unit <= 0xFFFF; ++unit) {
      verdicts += TryCast<std::string>(WideString(1, static_cast<char16_t>(unit))).value_or("-");
    }
    return verdicts;
  };

  EXPECT_TRUE(all("C") == all(kUtf8Locale));
}

TEST(Cast, MalformedUtf8IsABadCast) {
  for (const auto& row : tests::kMalformed) {
    EXPECT_THROW(Cast<WideString>(row.bytes), std::bad_cast) << row.name;
    EXPECT_THROW(Cast<WideString>("text before " + row.bytes), std::bad_cast) << row.name;
    EXPECT_THROW(Cast<WideString>(row.bytes + " and behind"), std::bad_cast) << row.name;
  }
}

TEST(Cast, EveryLoneSurrogateIsABadCast) {
  for (unsigned unit = 0xD800; unit <= 0xDFFF; ++unit) {
    const WideString lone(1, static_cast<char16_t>(unit));
    ASSERT_THROW(Cast<std::string>(lone), std::bad_cast) << unit;
    ASSERT_THROW(Cast<std::string>(u"a" + lone + u"b"), std::bad_cast) << unit;
  }
}

TEST(Cast, APairIsFourBytes) {
  const WideString pair{char16_t{0xD83D}, char16_t{0xDE00}};

  EXPECT_EQ(Cast<std::string>(pair), "\xF0\x9F\x98\x80");
  EXPECT_EQ(Cast<WideString>(std::string("\xF0\x9F\x98\x80")), pair);
}

TEST(Cast, ANulStaysInItsPlace) {
  EXPECT_EQ(Cast<std::string>(std::u16string_view(u"a\0\u00E9\0", 4)), std::string("a\0\xC3\xA9\0", 5));
  EXPECT_EQ(Cast<WideString>(std::string_view("a\0\xC3\xA9\0", 5)), std::u16string(u"a\0\u00E9\0", 4));
}

TEST(Cast, AnEmptyTextStaysEmpty) {
  EXPECT_EQ(Cast<std::string>(WideString()), "");
  EXPECT_EQ(Cast<WideString>(std::string()), u"");
}

TEST(Cast, TheFoundationsNarrowStringIsCopiedByteForByte) {
  const NarrowString bytes("not UTF-8: \xFF\x80\0.", 15);

  EXPECT_EQ(Cast<std::string>(bytes), bytes);
}

}  // namespace
}  // namespace tov::text
