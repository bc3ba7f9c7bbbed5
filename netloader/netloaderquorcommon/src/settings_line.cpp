#include "netloader/netloaderquorcommon/src/settings_line.h"

namespace netloader::quor::detail {

std::optional<SettingsLine> ParseSettingsLine(std::string_view line) {
  const auto equals = line.find('=');
  if (equals == std::string_view::npos || equals == 0) {
    return std::nullopt;
  }
  return SettingsLine{line.substr(0, equals), line.substr(equals + 1)};
}

}  // namespace netloader::quor::detail
