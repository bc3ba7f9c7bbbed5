// A line of the settings as a person reads it.
#pragma once

#include <string>
#include <string_view>

#include "doctor/examine/settings_report.h"

namespace doctor {

/// A key of the launcher, and what it holds.
struct KnownKey {
  std::string name;
  std::string meaning;
};

/// What a line probably means. The views look into the entry.
struct SettingsLine {
  const SettingsEntry& entry;
  const SettingsReport& settings;
  bool has_mark = false;           ///< A byte-order mark stands in front.
  bool has_export = false;         ///< So does the shell's `export`.
  bool has_colon = false;          ///< In place of the equals sign.
  std::string_view key = {};       ///< Without a mark.
  std::string_view bare_key = {};  ///< Without `export` and blanks as well.
  std::string_view value = {};
  const KnownKey* meant = nullptr;  ///< The launcher's key that was probably meant; null when it is none.
};

/// Reads the line as a person does.
SettingsLine ReadAsMeant(const SettingsEntry& entry, const SettingsReport& settings);

/// The whole line as it was probably meant: the launcher's key and the path, with nothing around them. What
/// only a person can replace stays.
std::string MeantLine(const SettingsLine& line);

/// The path in it alone.
std::string MeantValue(const SettingsLine& line);

/// Whether the runtime root was probably meant.
bool IsAboutRoot(const SettingsLine& line);

/// As the replacement of sed's `s` command with `|` between its parts.
std::string SedReplacement(std::string_view text);

/// The text without blanks at its ends.
std::string_view Trimmed(std::string_view text);

bool IsBlank(char letter);

/// Whether the texts differ in nothing but upper and lower case.
bool EqualButForCase(std::string_view a, std::string_view b);

/// Whether the value stands in plain quotes, whatever blanks there are around them.
bool IsInQuotes(std::string_view value);

/// The same for quotes as word processors make them.
bool IsInTypographicQuotes(std::string_view value);

}  // namespace doctor
