// What a load of the settings hands out while it goes on.
#pragma once

#include <string_view>

#include "foundation/strings.h"
#include "netloader/netloaderquorcommon/src/settings_line.h"
#include "netloader/netloaderquorcommon/src/settings_map.h"

namespace netloader::quor::detail {

/// Hears of each step when it is taken, and before the exception that a failed one ends with. Texts and pairs are valid
/// during the call.
class SettingsListener {
 public:
  SettingsListener(const SettingsListener&) = delete;
  SettingsListener& operator=(const SettingsListener&) = delete;

  /// Nothing is read, since everything was before.
  virtual void IsLoadedAlready() {}
  /// The file cannot be opened, for the reason `error` (an errno).
  virtual void CannotOpen(const tov::WideString& /*path*/, int /*error*/) {}
  /// The file is open, but cannot be read to its end.
  virtual void CannotRead(const tov::WideString& /*path*/, int /*error*/) {}
  /// The line sets nothing.
  virtual void Skips(std::string_view /*line*/) {}
  /// The line sets something, if it is UTF-8.
  virtual void Takes(std::string_view /*line*/, const SettingsLine& /*parsed*/) {}
  /// The pair of the line taken last is kept, maybe in the place of an earlier one.
  virtual void Stores(const SettingsPair& /*pair*/, bool /*replaces*/) {}
  /// All lines are read.
  virtual void IsLoaded() {}

 protected:
  SettingsListener() = default;
  ~SettingsListener() = default;
};

}  // namespace netloader::quor::detail
