// What of a line of the settings may be shown: other programs keep passwords there.
#pragma once

#include <optional>
#include <string>

#include "doctor/examine/settings_report.h"

namespace doctor {

/// What stands in the place of what is not shown.
inline constexpr std::string_view kHidden = "(hidden)";

/// Bytes as they are in the file; empty where they are not to be shown.
struct ShownLine {
  std::optional<std::string> key;    ///< Hidden when it does not look like a name: it may be a piece of a value.
  std::optional<std::string> value;  ///< Hidden unless the key is the launcher's, or was meant to be.
};

/// The one rule for text, JSON, warnings and the log. Of a skipped line the value is the line, as in the entry.
ShownLine ShownOf(const SettingsEntry& entry);

}  // namespace doctor
