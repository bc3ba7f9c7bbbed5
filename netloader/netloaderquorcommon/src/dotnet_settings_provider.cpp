#include "netloader/netloaderquorcommon/src/dotnet_settings_provider.h"

#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>

#include "foundation/cast.h"
#include "netloader/logger/log.h"
#include "netloader/netloaderquorcommon/src/settings_constants.h"
#include "netloader/netloaderquorcommon/src/settings_file.h"

namespace netloader::quor {

using enum logger::LogLevel;
using logger::Log;
using tov::WideString;
using tov::text::Cast;

DotnetSettingsProvider& DotnetSettingsProvider::GetInstance() {
  static DotnetSettingsProvider provider;
  provider.LoadSettingsFromFile();
  return provider;
}

void DotnetSettingsProvider::LoadSettingsFromFile() {
  if (loaded) {
    Log(TRACE, L"LoadSettingsFromFile: settings already loaded");
    return;
  }
  settingsSource = SettingsFilePath();
  const std::string path = Cast<std::string>(settingsSource);
  SettingsFile file(path);
  if (!file.IsOpen()) {
    Log(ERROR, L"LoadSettingsFromFile: Failed to open file by path '", settingsSource, L"'");
    throw CannotOpenSettings(path);
  }
  auto place = settings.end();
  ForEachSettingsLine(file, [&](std::string_view line, const std::optional<SettingsLine>& parsed) {
    place = ProcessLine(line, parsed, place);
  });
  loaded = true;
  Log(TRACE, L"LoadSettingsFromFile: settings loaded");
}

DotnetSettingsProvider::Settings::iterator DotnetSettingsProvider::ProcessLine(
    std::string_view line, const std::optional<SettingsLine>& parsed, Settings::iterator place) {
  if (!parsed) {
    Log(TRACE, L"LoadSettingsFromFile: skip line '", line, L"'");
    return place;
  }
  Log(TRACE, L"LoadSettingsFromFile: process line '", line, L"'");
  Log(TRACE, L"LoadSettingsFromFile: key = '", parsed->key, L"'", L", value = '", parsed->value, L"'");
  const SettingsPair pair = DecodeSettingsLine(*parsed);
  const auto after = place == settings.end() ? place : std::next(place);
  return settings.insert_or_assign(after, PooledString(pair.key, &pool_), std::u16string_view(pair.value));
}

WideString DotnetSettingsProvider::GetSettingsSource() {
  if (!loaded) {
    settingsSource = u"Settings not loaded yet";
  }
  return settingsSource;
}

WideString DotnetSettingsProvider::GetValue(const WideString& key) const {
  if (key.empty()) {
    Log(ERROR, L"Requested configuration key is empty");
    throw std::invalid_argument("Cannot read empty configuration key");
  }
  const auto found = settings.find(std::u16string_view(key));
  return found != settings.end() ? WideString(found->second) : WideString();
}

}  // namespace netloader::quor
