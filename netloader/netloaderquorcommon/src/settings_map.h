// The pairs of the settings file.
#pragma once

#include <map>
#include <memory_resource>
#include <string_view>

#include "foundation/code_unit_less.h"
#include "foundation/strings.h"

namespace netloader::quor::detail {

/// What a line sets, in UTF-16.
struct SettingsPair {
  tov::WideString key;
  tov::WideString value;
};

/// Keeps one value for each key. Its memory grows with the keys and their longest values, not with the lines.
class SettingsMap {
 public:
  SettingsMap() = default;
  SettingsMap(const SettingsMap&) = delete;
  SettingsMap& operator=(const SettingsMap&) = delete;

  /// Keeps the pair: of several with one key the last counts. True when it replaces an earlier one. Throws
  /// `std::bad_alloc`, and then keeps what it had.
  bool Store(const SettingsPair& pair);

  /// The key's value, empty when there is none; valid until the next pair is stored.
  std::u16string_view Find(std::u16string_view key) const;

 private:
  using String = tov::types::basic_string_t<char16_t, std::pmr::polymorphic_allocator<char16_t>>;
  using Pairs = std::pmr::map<String, String, tov::CodeUnitLess>;

  /// Where the pair is or belongs.
  struct Place {
    Pairs::iterator at;
    bool is_taken;
  };
  Place PlaceOf(std::u16string_view key);
  bool BelongsAfterLast(std::u16string_view key) const;

  std::pmr::monotonic_buffer_resource pool_;  // Pairs are never removed, so they stand in a few large blocks.
  Pairs pairs_{&pool_};
  Pairs::iterator last_ = pairs_.end();  // The pair that was stored last.
};

}  // namespace netloader::quor::detail
