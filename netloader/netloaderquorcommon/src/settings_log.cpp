#include "netloader/netloaderquorcommon/src/settings_log.h"

#include <cstdint>

#include "netloader/logger/log.h"
#include "netloader/logger/logger.h"

namespace netloader::quor::detail {

using enum logger::LogLevel;
using logger::Log;
using tov::WideString;

void SettingsLog::IsLoadedAlready() {
  Log(TRACE, L"LoadSettingsFromFile: settings already loaded");
}

void SettingsLog::CannotOpen(const WideString& path, int /*error*/) {
  Log(ERROR, L"LoadSettingsFromFile: Failed to open file by path '", path, L"'");
}

void SettingsLog::CannotRead(const WideString& path, int error) {
  Log(ERROR, L"LoadSettingsFromFile: Failed to read file by path '", path, L"', error ", std::int64_t{error});
}

void SettingsLog::Skips(std::string_view line) {
  Log(TRACE, L"LoadSettingsFromFile: skip line '", line, L"'");
}

void SettingsLog::Takes(std::string_view line, const SettingsLine& parsed) {
  Log(TRACE, L"LoadSettingsFromFile: process line '", line, L"'");
  Log(TRACE, L"LoadSettingsFromFile: key = '", parsed.key, L"'", L", value = '", parsed.value, L"'");
}

void SettingsLog::IsLoaded() {
  Log(TRACE, L"LoadSettingsFromFile: settings loaded");
}

}  // namespace netloader::quor::detail
