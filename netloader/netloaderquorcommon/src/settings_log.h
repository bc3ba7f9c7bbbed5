// The log lines of a load of the settings.
#pragma once

#include <string_view>

#include "foundation/strings.h"
#include "netloader/netloaderquorcommon/src/settings_line.h"
#include "netloader/netloaderquorcommon/src/settings_listener.h"

namespace netloader::quor::detail {

/// Writes a line for each step to the current logger.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): no listener is destroyed through its base.
class SettingsLog final : public SettingsListener {
 public:
  void IsLoadedAlready() override;
  void CannotOpen(const tov::WideString& path, int error) override;
  void CannotRead(const tov::WideString& path, int error) override;
  void Skips(std::string_view line) override;
  void Takes(std::string_view line, const SettingsLine& parsed) override;
  void IsLoaded() override;
};

}  // namespace netloader::quor::detail
