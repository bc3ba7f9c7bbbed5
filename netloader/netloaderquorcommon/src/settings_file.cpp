#include "netloader/netloaderquorcommon/src/settings_file.h"

#include <ios>

#include "foundation/cast.h"

namespace netloader::quor {

using tov::WideString;
using tov::text::Cast;

SettingsPair DecodeSettingsLine(const SettingsLine& line) {
  return {Cast<WideString>(line.key), Cast<WideString>(line.value)};
}

std::system_error CannotOpenSettings(const std::string& path) {
  return {std::io_errc::stream, "Cannot open settings file by path: " + path};
}

WideString SettingsPath(const WideString& value) {
  return value.substr(0, value.find(u'\0'));
}

}  // namespace netloader::quor
