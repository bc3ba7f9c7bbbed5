// Enumerations whose values have a name: one table each, which every reader and the documents share.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace doctor {

/// A value, its stable name for machines, and what it means.
template <typename Value>
struct Named {
  Value value;
  std::string_view code;
  std::string_view meaning;
};

/// Whether the table has one row for each value up to `last`, in the order of the values, and each has a code.
template <typename Row, std::size_t kSize, typename Value>
constexpr bool IsComplete(const std::array<Row, kSize>& rows, Value last) {
  std::size_t at = 0;
  return kSize == static_cast<std::size_t>(last) + 1 && std::ranges::all_of(rows, [&](const Row& row) {
           return static_cast<std::size_t>(row.value) == at++ && !row.code.empty();
         });
}

/// The value's row in a table that is complete.
template <typename Row, std::size_t kSize, typename Value>
constexpr const Row& RowOf(const std::array<Row, kSize>& rows, Value value) {
  return rows.at(static_cast<std::size_t>(value));
}

}  // namespace doctor
