// The keys of the settings file that a launch reads.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace netloader::quor::detail {

enum class SettingsKey {
  kDotnetRootFolder,  ///< The .NET root.
  kLoaderLoggingDir,  ///< The folder of the log file.
};

/// A key and how it is written in the file. Every other key is ignored.
struct SettingsKeyName {
  SettingsKey key;
  std::u16string_view name;
};

inline constexpr auto kSettingsKeys = std::to_array<SettingsKeyName>({
    {SettingsKey::kDotnetRootFolder, u"DotnetRootFolder"},
    {SettingsKey::kLoaderLoggingDir, u"LoaderLoggingDir"},
});

/// Whether a table has one row for every key, in the order of the keys, so that a key is its row's number.
template <typename Table>
constexpr bool HasARowForEveryKey(const Table& table) {
  std::size_t number = 0;
  return table.size() == kSettingsKeys.size() &&
         std::ranges::all_of(table, [&](const auto& row) { return row.key == static_cast<SettingsKey>(number++); });
}

static_assert(HasARowForEveryKey(kSettingsKeys), "looked up by number");

constexpr std::u16string_view NameOf(SettingsKey key) {
  return kSettingsKeys[static_cast<std::size_t>(key)].name;
}

/// The key of that name; empty for one that no launch reads.
constexpr std::optional<SettingsKey> FindKey(std::u16string_view name) {
  const auto* row = std::ranges::find(kSettingsKeys, name, &SettingsKeyName::name);
  return row != kSettingsKeys.end() ? std::optional(row->key) : std::nullopt;
}

}  // namespace netloader::quor::detail
