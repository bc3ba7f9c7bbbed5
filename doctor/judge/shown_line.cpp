#include "doctor/judge/shown_line.h"

#include <algorithm>
#include <string_view>

#include "doctor/judge/near_misses/settings_line.h"

namespace doctor {
namespace {

constexpr std::size_t kLongestName = 64;
constexpr std::string_view kInNames = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_.- ";

// Text in base64 ends with equals signs, so that all of it would pass for a key without a value.
bool IsPadding(std::string_view value) {
  return value.find_first_not_of("= \t\r") == std::string_view::npos;
}

bool IsName(const SettingsEntry& entry) {
  return entry.key.size() <= kLongestName && entry.key.find_first_not_of(kInNames) == std::string::npos &&
         !IsPadding(entry.value);
}

bool IsBlankLine(const SettingsEntry& entry) {
  return entry.key.empty() && std::ranges::all_of(entry.value, IsBlank);
}

}  // namespace

ShownLine ShownOf(const SettingsEntry& entry) {
  if (IsBlankLine(entry) || ReadAsMeant(entry, {}).meant != nullptr) {
    return {entry.key, entry.value};
  }
  return {entry.key.empty() || IsName(entry) ? std::optional(entry.key) : std::nullopt, std::nullopt};
}

}  // namespace doctor
