#include "netloader/netloaderquorcommon/src/settings_map.h"

#include <iterator>
#include <string>
#include <utility>

namespace netloader::quor::detail {

bool SettingsMap::Store(const SettingsPair& pair) {
  const Place place = PlaceOf(pair.key);
  // A key is only copied when it is new: the pool gives nothing back.
  last_ =
      place.is_taken ? place.at : pairs_.emplace_hint(place.at, std::u16string_view(pair.key), std::u16string_view());
  last_->second = std::u16string_view(pair.value);
  return place.is_taken;
}

std::u16string_view SettingsMap::Find(std::u16string_view key) const {
  const auto found = pairs_.find(key);
  return found != pairs_.end() ? std::u16string_view(found->second) : std::u16string_view();
}

// Files tend to be written in the order of their keys, so the place after the last pair is tried first: two comparisons
// instead of one for each level of the tree.
SettingsMap::Place SettingsMap::PlaceOf(std::u16string_view key) {
  if (BelongsAfterLast(key)) {
    return {std::next(last_), false};
  }
  const auto at = pairs_.lower_bound(key);
  return {at, at != pairs_.end() && at->first == key};
}

bool SettingsMap::BelongsAfterLast(std::u16string_view key) const {
  if (last_ == pairs_.end() || !pairs_.key_comp()(last_->first, key)) {
    return false;
  }
  const auto after = std::next(last_);
  return after == pairs_.end() || pairs_.key_comp()(key, after->first);
}

}  // namespace netloader::quor::detail
