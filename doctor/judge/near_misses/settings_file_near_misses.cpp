#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string_view>

#include "doctor/examine/settings_report.h"
#include "doctor/judge/findings.h"
#include "doctor/judge/near_misses/access.h"
#include "doctor/judge/near_misses/checks.h"
#include "doctor/judge/near_misses/near_misses.h"
#include "doctor/judge/warning.h"
#include "doctor/judge/words/message.h"
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

// With the words for the folder that the file belongs into.
Clue AtFolder(const SettingsReport& settings) {
  const std::string folder = fs::path(settings.path).parent_path();
  return AtFile(
      settings,
      {{"folder", Printable(folder)}, {"folder_word", ShellWord(folder)}, {"old_word", ShellWord(folder + ".old")}});
}

fs::file_type TypeOf(const fs::path& path) {
  std::error_code ignored;
  return fs::status(path, ignored).type();
}

std::optional<Clue> FolderMissing(const SettingsReport& settings) {
  const bool isMissing = TypeOf(fs::path(settings.path).parent_path()) == fs::file_type::not_found;
  return isMissing ? std::optional(AtFolder(settings)) : std::nullopt;
}

std::optional<Clue> FolderIsNone(const SettingsReport& settings) {
  const fs::file_type type = TypeOf(fs::path(settings.path).parent_path());
  const bool isOther =
      fs::status_known(fs::file_status(type)) && type != fs::file_type::not_found && type != fs::file_type::directory;
  return isOther ? std::optional(AtFolder(settings)) : std::nullopt;
}

std::optional<Clue> LinkBroken(const SettingsReport& settings) {
  std::error_code error;
  const fs::path target = fs::read_symlink(settings.path, error);
  if (error || ::access(settings.path.c_str(), F_OK) == 0 || (errno != ENOENT && errno != ELOOP && errno != ENOTDIR)) {
    return std::nullopt;
  }
  return AtFile(settings, {{"target", Printable(target.string())}});
}

// Folders and pipes have findings of their own.
std::optional<Clue> AreNoFile(const SettingsReport& settings) {
  const fs::file_type type = TypeOf(settings.path);
  const bool isOther =
      type == fs::file_type::block || type == fs::file_type::character || type == fs::file_type::socket;
  return isOther ? std::optional(AtFile(settings)) : std::nullopt;
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
    {Finding::kSettingsFolderMissing, FolderMissing},
    {Finding::kSettingsFolderNoFolder, FolderIsNone},
    {Finding::kSettingsLinkBroken, LinkBroken},
    {Finding::kSettingsNotAFile, AreNoFile},
    {Finding::kSettingsAreFolder, AreFolder},
    {Finding::kSettingsHaveExtension, HaveExtension},
    {Finding::kSettingsAreUtf16, AreUtf16},
});

}  // namespace

Warnings SettingsFileNearMisses(const SettingsReport& report) {
  return Noticed(kFileChecks, report);
}

}  // namespace doctor
