// UTF-8 and UTF-16 as the Unicode standard tabulates them, for comparison.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tests {

/// One row of the standard's table of well-formed UTF-8 (table 3-7): the code points and the range of each byte.
struct WellFormedRow {
  struct Bytes {
    unsigned int first;
    unsigned int last;
  };
  char32_t first;
  char32_t last;
  std::size_t length;
  std::array<Bytes, 4> bytes;
};

inline constexpr auto kWellFormed = std::to_array<WellFormedRow>({
    {0x0000, 0x007F, 1, {{{0x00, 0x7F}}}},
    {0x0080, 0x07FF, 2, {{{0xC2, 0xDF}, {0x80, 0xBF}}}},
    {0x0800, 0x0FFF, 3, {{{0xE0, 0xE0}, {0xA0, 0xBF}, {0x80, 0xBF}}}},
    {0x1000, 0xCFFF, 3, {{{0xE1, 0xEC}, {0x80, 0xBF}, {0x80, 0xBF}}}},
    {0xD000, 0xD7FF, 3, {{{0xED, 0xED}, {0x80, 0x9F}, {0x80, 0xBF}}}},
    {0xE000, 0xFFFF, 3, {{{0xEE, 0xEF}, {0x80, 0xBF}, {0x80, 0xBF}}}},
    {0x10000, 0x3FFFF, 4, {{{0xF0, 0xF0}, {0x90, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}}}},
    {0x40000, 0xFFFFF, 4, {{{0xF1, 0xF3}, {0x80, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}}}},
    {0x100000, 0x10FFFF, 4, {{{0xF4, 0xF4}, {0x80, 0x8F}, {0x80, 0xBF}, {0x80, 0xBF}}}},
});

/// Calls `visit(code_point, utf8)` for every row's sequences in the order of the code points, which the table implies:
/// the n-th sequence of a row is the row's n-th code point.
template <typename Visit>
void ForEachWellFormed(const Visit& visit) {
  for (const WellFormedRow& row : kWellFormed) {
    char32_t value = row.first;
    std::array<unsigned int, 4> bytes{};
    for (std::size_t i = 0; i < row.length; ++i) {
      bytes[i] = row.bytes[i].first;
    }
    for (bool more = true; more; ++value) {
      std::string utf8;
      for (std::size_t i = 0; i < row.length; ++i) {
        utf8 += static_cast<char>(bytes[i]);
      }
      visit(value, utf8);
      more = false;
      for (std::size_t i = row.length; i-- > 0 && !more;) {
        more = bytes[i] < row.bytes[i].last;
        bytes[i] = more ? bytes[i] + 1 : row.bytes[i].first;
      }
    }
  }
}

/// True when the whole text is one sequence of the table.
inline bool IsOneWellFormedSequence(std::string_view text) {
  for (const WellFormedRow& row : kWellFormed) {
    bool fits = text.size() == row.length;
    for (std::size_t i = 0; fits && i < row.length; ++i) {
      const unsigned int byte = static_cast<unsigned char>(text[i]);
      fits = byte >= row.bytes[i].first && byte <= row.bytes[i].last;
    }
    if (fits) {
      return true;
    }
  }
  return false;
}

/// The UTF-16 of a code point outside the surrogates: the pairs follow each other as the code points do.
inline std::u16string Utf16Of(char32_t value) {
  if (value < 0x10000) {
    return {static_cast<char16_t>(value)};
  }
  const auto above = static_cast<std::uint32_t>(value - 0x10000);
  return {static_cast<char16_t>(0xD800 + above / 1024), static_cast<char16_t>(0xDC00 + above % 1024)};
}

/// The three bytes that a surrogate would have if it were a character.
inline std::string Utf8OfSurrogate(char16_t unit) {
  return {'\xED', static_cast<char>(0x80 + unit / 64 % 64), static_cast<char>(0x80 + unit % 64)};
}

/// Malformed UTF-8, by class. The lenient decoder takes some of it; `lenient` is what it makes of it then.
struct MalformedText {
  const char* name;
  std::string bytes;
  std::optional<std::u16string> lenient;
};

inline const MalformedText kMalformed[] = {
    {"lone continuation, first", "\x80", std::nullopt},
    {"lone continuation, last", "\xBF", std::nullopt},
    {"continuation after text", "ab\x80", std::nullopt},
    {"continuation after a whole sequence", "\xC3\xA9\xA9", std::nullopt},
    {"F8", "\xF8\x88\x80\x80\x80", std::nullopt},
    {"FB", "\xFB\xBF\xBF\xBF\xBF", std::nullopt},
    {"FC", "\xFC\x84\x80\x80\x80\x80", std::nullopt},
    {"FE", "\xFE", std::nullopt},
    {"FF", "\xFF", std::nullopt},
    {"two bytes cut off", "\xC3", std::nullopt},
    {"three bytes cut off after one", "\xE2", std::nullopt},
    {"three bytes cut off after two", "\xE2\x82", std::nullopt},
    {"four bytes cut off after one", "\xF0", std::nullopt},
    {"four bytes cut off after two", "\xF0\x9F", std::nullopt},
    {"four bytes cut off after three", "ok\xF0\x9F\x98", std::nullopt},
    {"above U+10FFFF, first", "\xF4\x90\x80\x80", std::nullopt},
    {"above U+10FFFF, F5", "\xF5\x80\x80\x80", std::nullopt},
    {"above U+10FFFF, last", "\xF7\xBF\xBF\xBF", std::nullopt},
    {"overlong NUL in two bytes", "\xC0\x80", std::u16string(1, u'\0')},
    {"overlong slash in two bytes", "\xC0\xAF", u"/"},
    {"overlong U+007F in two bytes", "\xC1\xBF", u"\u007F"},
    {"overlong U+0000 in three bytes", "\xE0\x80\x80", std::u16string(1, u'\0')},
    {"overlong U+07FF in three bytes", "\xE0\x9F\xBF", u"\u07FF"},
    {"overlong U+0000 in four bytes", "\xF0\x80\x80\x80", std::u16string(1, u'\0')},
    {"overlong U+FFFF in four bytes", "\xF0\x8F\xBF\xBF", u"\uFFFF"},
    {"encoded surrogate, first", "\xED\xA0\x80", std::u16string(1, char16_t{0xD800})},
    {"encoded surrogate, last", "\xED\xBF\xBF", std::u16string(1, char16_t{0xDFFF})},
    {"encoded pair", "\xED\xA0\xBD\xED\xB8\x80", std::u16string{char16_t{0xD83D}, char16_t{0xDE00}}},
    {"a letter for a continuation, two bytes", "\xC3)", u"\u00E9"},
    {"a letter for the second of three", "\xE2(\x80", std::u16string(1, char16_t{0x2A00})},
    {"a lead for a continuation", "\xC3\xC3", u"\u00C3"},
    {"a letter for the last of four", std::string("\xF0\x9F\x98") + "A",
     std::u16string{char16_t{0xD83D}, char16_t{0xDE01}}},
};

}  // namespace tests
