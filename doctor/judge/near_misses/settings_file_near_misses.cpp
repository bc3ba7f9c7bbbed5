#include <filesystem>
#include <string_view>

#include "doctor/judge/near_misses/access.h"
#include "doctor/judge/near_misses/near_misses.h"
#include "doctor/judge/words/text.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

Clue AtFile(const SettingsReport& settings, Values values = {}) {
  values.emplace("file_word", ShellWord(settings.path));
  values.emplace("new_word", ShellWord(settings.path + ".new"));
  return AtPath(settings.path, std::move(values));
}

std::optional<Clue> FolderNotEntered(const SettingsReport& settings) {
  return settings.IsReadable() ? std::nullopt : ClosedFolderAbove(settings.path);
}

std::optional<Clue> AreFolder(const SettingsReport& settings) {
  std::error_code ignored;
  return fs::is_directory(settings.path, ignored) ? std::optional(AtFile(settings)) : std::nullopt;
}

// Editors of Windows add ".txt" and hide it.
std::optional<Clue> HaveExtension(const SettingsReport& settings) {
  const std::string other = settings.path + ".txt";
  std::error_code ignored;
  if (!fs::is_regular_file(other, ignored)) {
    return std::nullopt;
  }
  return AtFile(settings, {{"found", Printable(other)}, {"found_word", ShellWord(other)}});
}

// The name that iconv has for the encoding; null when it is not UTF-16. Without a mark it shows by the NULs that stand
// beside the letters.
const char* Utf16Encoding(std::string_view line) {
  if (line.starts_with("\xFF\xFE") || line.starts_with("\xFE\xFF")) {
    return "UTF-16";
  }
  const auto null = line.find('\0');
  return null == 1 ? "UTF-16LE" : null == 0 ? "UTF-16BE" : nullptr;
}

std::optional<Clue> AreUtf16(const SettingsReport& settings) {
  if (settings.entries.empty()) {
    return std::nullopt;
  }
  const SettingsEntry& first = settings.entries.front();
  const char* encoding = Utf16Encoding(first.key.empty() ? first.value : first.key);
  return encoding != nullptr ? std::optional(AtFile(settings, {{"encoding", encoding}})) : std::nullopt;
}

// What the settings file as a whole is looked at for.
constexpr auto kFileChecks = std::to_array<Check<SettingsReport>>({
    {Finding::kFolderNotEntered, FolderNotEntered},
    {Finding::kSettingsAreFolder, AreFolder},
    {Finding::kSettingsHaveExtension, HaveExtension},
    {Finding::kSettingsAreUtf16, AreUtf16},
});

}  // namespace

Warnings SettingsFileNearMisses(const SettingsReport& report) {
  return Noticed(kFileChecks, report);
}

}  // namespace doctor
