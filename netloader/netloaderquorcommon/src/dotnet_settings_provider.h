// The settings file in memory.
#pragma once

#include <map>
#include <memory_resource>
#include <optional>
#include <string_view>

#include "foundation/code_unit_less.h"
#include "foundation/strings.h"
#include "netloader/netloaderquorcommon/src/settings_line.h"

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
  using PooledString = tov::types::basic_string_t<char16_t, std::pmr::polymorphic_allocator<char16_t>>;
  using Settings = std::pmr::map<PooledString, PooledString, tov::CodeUnitLess>;

  /// Stores what the line sets, if anything. Returns the place of its pair, else `place`, which is a guess at the
  /// place: the lines of a file often stand in order.
  Settings::iterator ProcessLine(std::string_view line, const std::optional<SettingsLine>& parsed,
                                 Settings::iterator place);

  std::pmr::monotonic_buffer_resource pool_;  // Pairs only ever come, so they stand in a few large blocks.
  Settings settings{&pool_};
  bool loaded = false;
  tov::WideString settingsSource;
};

}  // namespace netloader::quor
