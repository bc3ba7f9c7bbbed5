// The order of wide strings in look-ups.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace tov {

/// Less-than by code units, a proper prefix first: the order of `std::less` for wide strings. Compares four units at a
/// time, since the keys of one file tend to begin alike.
struct CodeUnitLess {
  using is_transparent = void;  // Any string of code units is looked up as it is.

  bool operator()(std::u16string_view a, std::u16string_view b) const noexcept {
    const std::size_t common = std::min(a.size(), b.size());
    std::size_t at = 0;
    for (; at + kStep <= common; at += kStep) {
      if (const std::uint64_t difference = Load(a, at) ^ Load(b, at); difference != 0) {
        at += static_cast<std::size_t>(std::countr_zero(difference)) / kUnitBits;
        return a[at] < b[at];
      }
    }
    for (; at < common; ++at) {
      if (a[at] != b[at]) {
        return a[at] < b[at];
      }
    }
    return a.size() < b.size();
  }

 private:
  static constexpr std::size_t kUnitBits = 16;
  static constexpr std::size_t kStep = 4;
  static_assert(std::endian::native == std::endian::little, "the first unit must be in the lowest bits");

  static std::uint64_t Load(std::u16string_view text, std::size_t at) noexcept {
    std::uint64_t units = 0;  // Copied, as a string's units are not aligned for eight bytes.
    std::memcpy(&units, text.data() + at, sizeof(units));
    return units;
  }
};

}  // namespace tov
