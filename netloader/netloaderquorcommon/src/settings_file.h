// Reading the settings file.
#pragma once

#include <cstddef>
#include <cstdio>
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

/// The file, line by line. A C stream: setting up a C++ one with its locales costs a good part of a launch.
class SettingsFile {
 public:
  /// Opens the file for reading, if it can.
  explicit SettingsFile(const std::string& path);
  SettingsFile(const SettingsFile&) = delete;
  SettingsFile& operator=(const SettingsFile&) = delete;
  ~SettingsFile();

  bool IsOpen() const { return file_ != nullptr; }

  /// The next line without its newline, valid until the one after it is read; the last one may lack the newline. Empty
  /// at the end, and where the file cannot be read on. Throws `std::bad_alloc`.
  std::optional<std::string_view> NextLine();

 private:
  std::FILE* file_;
  char* line_ = nullptr;  // The C library's, which makes it longer.
  std::size_t room_ = 0;
};

/// Calls `visit(line, parsed)` for each line of an open file. `parsed` is empty for a line that sets nothing.
template <typename Visit>
void ForEachSettingsLine(SettingsFile& file, Visit visit) {
  while (const auto line = file.NextLine()) {
    visit(*line, ParseSettingsLine(*line));
  }
}

/// The value as a path: it ends at a NUL, as it would for the operating system.
tov::WideString SettingsPath(const tov::WideString& value);

}  // namespace netloader::quor
