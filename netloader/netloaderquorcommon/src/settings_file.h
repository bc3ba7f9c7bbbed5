// Reading the settings file.
#pragma once

#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "foundation/strings.h"
#include "netloader/netloaderquorcommon/src/settings_line.h"

namespace netloader::quor {

/// What a line sets, in UTF-16.
struct SettingsPair {
  tov::WideString key;
  tov::WideString value;
};

/// Throws `std::bad_cast` when a part is not UTF-8.
SettingsPair DecodeSettingsLine(const SettingsLine& line);

/// What is thrown when the file at `path` cannot be opened.
std::system_error CannotOpenSettings(const std::string& path);

/// Calls `visit(line, parsed)` for each line of the file, without its newline; the last one may lack it. `parsed` is
/// empty for a line that sets nothing. Ends where the file ends or cannot be read on.
template <typename Visit>
void ForEachSettingsLine(std::istream& file, Visit visit) {
  for (std::string line; std::getline(file, line);) {
    visit(std::string_view(line), ParseSettingsLine(line));
  }
}

/// The value as a path: it ends at a NUL, as it would for the operating system.
tov::WideString SettingsPath(const tov::WideString& value);

}  // namespace netloader::quor
