#include "netloader/netloaderquorcommon/src/dotnet_settings_provider.h"

#include <ios>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "foundation/cast.h"
#include "foundation/utf.h"
#include "netloader/logger/log.h"
#include "netloader/logger/logger.h"
#include "netloader/netloaderquorcommon/src/settings_constants.h"
#include "netloader/netloaderquorcommon/src/settings_file.h"
#include "netloader/netloaderquorcommon/src/settings_line.h"
#include "netloader/netloaderquorcommon/src/settings_log.h"

namespace netloader::quor {

using enum logger::LogLevel;
using logger::Log;
using tov::WideString;
using tov::text::Cast;

namespace {

// Has no state, and is there before any other object is created.
constinit detail::SettingsLog settings_log;

}  // namespace

DotnetSettingsProvider::DotnetSettingsProvider()
    : DotnetSettingsProvider(Cast<std::string>(detail::SettingsFilePath()), settings_log) {}

DotnetSettingsProvider::DotnetSettingsProvider(std::string path, detail::SettingsListener& listener)
    : path_(std::move(path)), listener_(&listener) {}

DotnetSettingsProvider& DotnetSettingsProvider::GetInstance() {
  DotnetSettingsProvider& provider = detail::Provider();
  provider.LoadSettingsFromFile();
  return provider;
}

void DotnetSettingsProvider::LoadSettingsFromFile() {
  if (loaded) {
    listener_->IsLoadedAlready();
    return;
  }
  settingsSource = tov::text::ToUtf16(path_);
  detail::SettingsFile file(path_);
  if (!file.IsOpen()) {
    listener_->CannotOpen(settingsSource, file.Error());
    throw std::system_error(std::io_errc::stream, "Cannot open settings file by path: " + path_);
  }
  ReadLines(file);
  // Lines are missing then, and with them maybe the ones that count.
  if (file.Error() != 0) {
    listener_->CannotRead(settingsSource, file.Error());
    throw std::system_error(std::io_errc::stream, "Cannot read settings file by path: " + path_);
  }
  loaded = true;
  listener_->IsLoaded();
}

void DotnetSettingsProvider::ReadLines(detail::SettingsFile& file) {
  detail::SettingsPair pair;  // One for all lines: its memory is used again.
  while (const auto line = file.NextLine()) {
    const auto parsed = detail::ParseSettingsLine(*line);
    if (!parsed) {
      listener_->Skips(*line);
      continue;
    }
    listener_->Takes(*line, *parsed);
    tov::text::CastInto(pair.key, parsed->key);
    tov::text::CastInto(pair.value, parsed->value);
    listener_->Stores(pair, settings.Store(pair));
  }
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
  return WideString(settings.Find(key));
}

void DotnetSettingsProvider::Replace(detail::SettingsKey key, const WideString& value) {
  settings.Store({WideString(NameOf(key)), value});
}

DotnetSettingsProvider& detail::Provider() {
  static DotnetSettingsProvider provider;
  return provider;
}

}  // namespace netloader::quor
