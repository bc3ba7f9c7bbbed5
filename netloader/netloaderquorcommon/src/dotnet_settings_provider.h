// The settings file in memory.
#pragma once

#include <string>

#include "foundation/strings.h"
#include "netloader/netloaderquorcommon/src/settings_keys.h"
#include "netloader/netloaderquorcommon/src/settings_listener.h"
#include "netloader/netloaderquorcommon/src/settings_map.h"

namespace netloader::quor {

namespace detail {
class SettingsFile;
}

/// Holds the pairs of the settings file. Not synchronised.
class DotnetSettingsProvider {
 public:
  /// For the product's settings file, with a log line for each step.
  DotnetSettingsProvider();

  /// For the file at `path`, with a listener that outlives the provider.
  [[gnu::visibility("hidden")]] DotnetSettingsProvider(std::string path, detail::SettingsListener& listener);

  /// The process's one provider, its file loaded. Throws what `LoadSettingsFromFile` throws, and then tries the whole
  /// load again on the next call.
  static DotnetSettingsProvider& GetInstance();

  /// Reads the file, once. Of several lines with one key the last counts. Throws `std::system_error` when the file
  /// cannot be opened or not be read to its end, `std::bad_cast` for a key or value that is not UTF-8, and
  /// `std::bad_alloc`; the pairs read so far are kept, and the settings count as not loaded. A folder in the file's
  /// place is an empty file.
  void LoadSettingsFromFile();

  /// The file's path once it is loaded, else "Settings not loaded yet".
  tov::WideString GetSettingsSource();

  /// The value of a key, empty when there is none. Throws `std::invalid_argument` for an empty key.
  tov::WideString GetValue(const tov::WideString& key) const;

  /// Gives a key another value than the file does.
  [[gnu::visibility("hidden")]] void Replace(detail::SettingsKey key, const tov::WideString& value);

 private:
  [[gnu::visibility("hidden")]] void ReadLines(detail::SettingsFile& file);

  detail::SettingsMap settings;
  bool loaded = false;
  tov::WideString settingsSource;
  std::string path_;
  detail::SettingsListener* listener_;
};

namespace detail {

/// The process's one provider, loaded or not.
DotnetSettingsProvider& Provider();

}  // namespace detail

}  // namespace netloader::quor
