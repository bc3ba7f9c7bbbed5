// Conversion of a whole text from one encoding to another, into the tail of a string.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "foundation/char_converters.h"
#include "foundation/result_code.h"
#include "foundation/strings.h"

namespace tov::detail {

/// Converts with the rules of two char converters (see char_converters.h): `From` reads, `To` writes.
template <typename From, typename To>
struct ConvertToContainer {
  using Input = std::basic_string_view<typename From::CharType>;
  using OutputChar = typename To::CharType;
  using Output = types::basic_string_t<OutputChar>;

  /// Writes the converted `range` into `output` from `offset` on; what stands before `offset` is kept, what stood
  /// after it is replaced. Returns 0, or "Invalid argument" for malformed input or "Out of memory" (for an offset that
  /// no string reaches, too), and then leaves `output` as it was. Never throws.
  [[nodiscard]] static int Do(Input range, Output& output, std::size_t offset) noexcept {
    try {
      return Replace(range, output, offset) ? result_code::kNoError : result_code::kInvalidArgument;
    } catch (...) {  // A string that is too long for memory, or for its type.
      return result_code::kOutOfMemory;
    }
  }

  /// The same with an answer: false for malformed input. Throws what the string throws for want of room.
  [[nodiscard]] static bool Replace(Input range, Output& output, std::size_t offset) {
    // Nearly every text is plain ASCII, which is the same unit for unit in both encodings.
    const std::size_t ascii = AsciiLength(range);
    const Input rest = range.substr(ascii);
    // Measured first, so that the output is sized once, and left alone when the range is malformed.
    const auto length = Measure(rest);
    if (!length) {
      return false;
    }
    output.resize(Sum(offset, ascii + *length));
    OutputChar* out = output.data() + offset;
    for (std::size_t at = 0; at < ascii; ++at) {
      out[at] = static_cast<OutputChar>(range[at]);
    }
    Write(rest, out + ascii);
    return true;
  }

 private:
  // A sum that wrapped around would cut the output, and the text would be written outside of it.
  static std::size_t Sum(std::size_t offset, std::size_t length) {
    if (length > SIZE_MAX - offset) {
      throw std::length_error("offset and length exceed every string");
    }
    return offset + length;
  }

  static std::size_t AsciiLength(Input range) {
    // The bits that no ASCII unit has, in as many units as a machine word takes.
    constexpr std::uint64_t kOthers = sizeof(typename From::CharType) == 1 ? 0x8080808080808080 : 0xFF80FF80FF80FF80;
    constexpr std::size_t kUnits = sizeof(kOthers) / sizeof(typename From::CharType);
    std::size_t length = 0;
    for (std::uint64_t units = 0; length + kUnits <= range.size(); length += kUnits) {
      std::memcpy(&units, range.data() + length, sizeof(units));
      if ((units & kOthers) != 0) {
        break;
      }
    }
    while (length < range.size() && static_cast<char32_t>(range[length]) < 0x80) {
      ++length;
    }
    return length;
  }

  static std::optional<std::size_t> Measure(Input range) {
    std::size_t length = 0;
    while (!range.empty()) {
      const auto read = From::Read(range);
      if (!read) {
        return std::nullopt;
      }
      length += To::Length(read->value);
      range.remove_prefix(read->length);
    }
    return length;
  }

  // Into room for a range that `Measure` accepted.
  static void Write(Input range, OutputChar* out) {
    while (!range.empty()) {
      const auto read = From::Read(range);
      out = To::Write(read->value, out);
      range.remove_prefix(read->length);
    }
  }
};

}  // namespace tov::detail

namespace tov::text {

/// UTF-16 to UTF-8, lone surrogates included (as three bytes each).
using Utf16ToUtf8 = tov::detail::ConvertToContainer<detail::Utf16CharConverterBase<char16_t>, Utf8CharConverter>;

/// UTF-8 to UTF-16.
using Utf8ToUtf16 = tov::detail::ConvertToContainer<Utf8CharConverter, detail::Utf16CharConverterBase<char16_t>>;

}  // namespace tov::text
