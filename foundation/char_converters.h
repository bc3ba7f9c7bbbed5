// One code point at a time, out of and into UTF-16 and UTF-8 text.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace tov::text {

/// What `Read` found at the front of a text.
struct CodePoint {
  char32_t value;
  std::size_t length;  ///< Units it took.
};

namespace detail {

constexpr bool IsHighSurrogate(char32_t value) {
  return value >= 0xD800 && value <= 0xDBFF;
}
constexpr bool IsLowSurrogate(char32_t value) {
  return value >= 0xDC00 && value <= 0xDFFF;
}
constexpr bool IsSurrogate(char32_t value) {
  return value >= 0xD800 && value <= 0xDFFF;
}

/// UTF-16. Lenient: a lone surrogate is a code point like any other, so that every wide path can be handed on.
template <typename Char>
struct Utf16CharConverterBase {
  using CharType = Char;

  /// The code point at the front of a non-empty text. Never empty.
  static constexpr std::optional<CodePoint> Read(std::basic_string_view<Char> text) {
    const char32_t first = text[0];
    if (IsHighSurrogate(first) && text.size() > 1 && IsLowSurrogate(text[1])) {
      return CodePoint{0x10000 + ((first - 0xD800) << 10) + (text[1] - 0xDC00U), 2};
    }
    return CodePoint{first, 1};
  }

  static constexpr std::size_t Length(char32_t value) { return value < 0x10000 ? 1 : 2; }

  /// Writes `Length(value)` units and returns the place after them.
  static constexpr Char* Write(char32_t value, Char* out) {
    if (value < 0x10000) {
      *out++ = static_cast<Char>(value);
    } else {
      *out++ = static_cast<Char>(0xD800 + ((value - 0x10000) >> 10));
      *out++ = static_cast<Char>(0xDC00 + (value & 0x3FF));
    }
    return out;
  }
};

/// UTF-16 as the Unicode standard has it: a lone surrogate is refused.
struct StrictUtf16CharConverter : Utf16CharConverterBase<char16_t> {
  static constexpr std::optional<CodePoint> Read(std::u16string_view text) {
    const auto read = Utf16CharConverterBase::Read(text);
    return IsSurrogate(read->value) ? std::nullopt : read;
  }
};

}  // namespace detail

/// UTF-8. Lenient: only lead bytes, the presence of continuation bytes and the limit U+10FFFF are checked; overlong
/// forms and encoded surrogates are accepted.
struct Utf8CharConverter {
  using CharType = char;

  /// The code point at the front of a non-empty text; empty for a byte that leads nothing, a sequence cut off by the
  /// end, or a value above U+10FFFF.
  static constexpr std::optional<CodePoint> Read(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    if (lead < 0x80) {
      return CodePoint{lead, 1};
    }
    const std::size_t length = SequenceLength(lead);
    if (length == 0 || text.size() < length) {
      return std::nullopt;
    }
    // The lead byte of n bytes begins with n set bits and a clear one; the others are the value's highest.
    char32_t value = lead & (0x7FU >> length);
    for (const char next : text.substr(1, length - 1)) {
      value = (value << 6) | (static_cast<unsigned char>(next) & 0x3FU);
    }
    return value <= 0x10FFFF ? std::optional(CodePoint{value, length}) : std::nullopt;
  }

  /// How many bytes a code point takes; a surrogate takes three, as its neighbours do.
  static constexpr std::size_t Length(char32_t value) {
    return value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
  }

  /// Writes `Length(value)` bytes and returns the place after them.
  static constexpr char* Write(char32_t value, char* out) {
    if (value < 0x80) {
      *out++ = static_cast<char>(value);
      return out;
    }
    const std::size_t length = Length(value);
    const char32_t marker = (0xF00U >> length) & 0xFF;
    *out++ = static_cast<char>(marker | (value >> (6 * (length - 1))));
    for (std::size_t left = length - 1; left > 0; --left) {
      *out++ = static_cast<char>(0x80 | ((value >> (6 * (left - 1))) & 0x3F));
    }
    return out;
  }

 private:
  static constexpr std::size_t SequenceLength(unsigned char lead) {
    return (lead & 0xE0) == 0xC0 ? 2 : (lead & 0xF0) == 0xE0 ? 3 : (lead & 0xF8) == 0xF0 ? 4 : 0;
  }
};

namespace detail {

/// UTF-8 as RFC 3629 has it: stray or missing continuation bytes, overlong forms and surrogates are refused.
struct StrictUtf8CharConverter : Utf8CharConverter {
  static constexpr std::optional<CodePoint> Read(std::string_view text) {
    const auto read = Utf8CharConverter::Read(text);
    if (!read || read->length == 1) {
      return read;
    }
    for (const char next : text.substr(1, read->length - 1)) {
      if ((static_cast<unsigned char>(next) & 0xC0) != 0x80) {
        return std::nullopt;
      }
    }
    return Length(read->value) == read->length && !IsSurrogate(read->value) ? read : std::nullopt;
  }
};

}  // namespace detail
}  // namespace tov::text
