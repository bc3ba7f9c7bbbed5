// The settings file in memory.
#pragma once

#include <map>
#include <string_view>

#include "foundation/strings.h"

namespace netloader::quor {

/// Holds the pairs of the settings file. Not synchronised.
class DotnetSettingsProvider {
 public:
  DotnetSettingsProvider() = default;

  /// The process's one provider, its file loaded. Throws what `LoadSettingsFromFile` throws, and then tries the whole
  /// load again on the next call.
  static DotnetSettingsProvider& GetInstance();

  /// Reads the file, once. Of several lines with one key the last counts. Throws `std::system_error` when the file
  /// cannot be opened and `std::bad_cast` for a key or value that is not UTF-8; the pairs read so far are kept, and the
  /// settings count as not loaded.
  void LoadSettingsFromFile();

  /// The file's path once it is loaded, else "Settings not loaded yet".
  tov::WideString GetSettingsSource();

  /// The value of a key, empty when there is none. Throws `std::invalid_argument` for an empty key.
  tov::WideString GetValue(const tov::WideString& key) const;

 private:
  void ProcessLine(std::string_view line);

  std::map<tov::WideString, tov::WideString> settings;
  bool loaded = false;
  tov::WideString settingsSource;
};

}  // namespace netloader::quor
