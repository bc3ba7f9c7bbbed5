// Conversion of a whole text from one encoding to another, into the tail of a string.
#pragma once

#include <cstddef>
#include <new>
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
  /// after it is replaced. Returns 0, or "Invalid argument" for malformed input or "Out of memory", and then leaves
  /// `output` as it was. Never throws.
  static int Do(Input range, Output& output, std::size_t offset) noexcept {
    const auto length = Measure(range);
    if (!length) {
      return result_code::kInvalidArgument;
    }
    try {
      output.resize(offset + *length);
    } catch (const std::bad_alloc&) {
      return result_code::kOutOfMemory;
    } catch (const std::length_error&) {
      return result_code::kOutOfMemory;
    }
    Write(range, output.data() + offset);
    return result_code::kNoError;
  }

  /// How many units the converted range takes; empty when it is malformed.
  static constexpr std::optional<std::size_t> Measure(Input range) {
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

  /// Converts a range that `Measure` accepted into `out`, which has room for it.
  static constexpr void Write(Input range, OutputChar* out) {
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
