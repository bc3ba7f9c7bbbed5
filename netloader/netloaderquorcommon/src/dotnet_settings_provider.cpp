#include "netloader/netloaderquorcommon/src/dotnet_settings_provider.h"

#include <fstream>
#include <ios>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

#include "foundation/cast.h"
#include "netloader/logger/log.h"
#include "netloader/netloaderquorcommon/src/settings_constants.h"
#include "netloader/netloaderquorcommon/src/settings_line.h"

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
  std::ifstream file(path);
  if (!file.is_open()) {
    Log(ERROR, L"LoadSettingsFromFile: Failed to open file by path '", settingsSource, L"'");
    throw std::system_error(std::io_errc::stream, "Cannot open settings file by path: " + path);
  }
  auto place = settings.end();
  for (std::string line; std::getline(file, line);) {
    place = ProcessLine(line, place);
  }
  loaded = true;
  Log(TRACE, L"LoadSettingsFromFile: settings loaded");
}

DotnetSettingsProvider::Settings::iterator DotnetSettingsProvider::ProcessLine(std::string_view line,
                                                                               Settings::iterator place) {
  const auto parsed = ParseSettingsLine(line);
  if (!parsed) {
    Log(TRACE, L"LoadSettingsFromFile: skip line '", line, L"'");
    return place;
  }
  const auto [key, value] = *parsed;
  Log(TRACE, L"LoadSettingsFromFile: process line '", line, L"'");
  Log(TRACE, L"LoadSettingsFromFile: key = '", key, L"'", L", value = '", value, L"'");
  auto wideKey = Cast<WideString>(key);
  auto wideValue = Cast<WideString>(value);
  const auto after = place == settings.end() ? place : std::next(place);
  return settings.insert_or_assign(after, std::move(wideKey), std::move(wideValue));
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
  const auto found = settings.find(key);
  return found != settings.end() ? found->second : WideString();
}

}  // namespace netloader::quor
