#include "netloader/netloaderquorcommon/src/dotnet_settings.h"

#include <cstdlib>

#include "foundation/utf.h"
#include "netloader/logger/log.h"
#include "netloader/netloaderquorcommon/src/dotnet_settings_provider.h"
#include "netloader/netloaderquorcommon/src/executable_folder.h"
#include "netloader/netloaderquorcommon/src/settings_constants.h"
#include "netloader/netloaderquorcommon/src/settings_file.h"

namespace netloader::quor {

using enum logger::LogLevel;
using logger::Log;
using tov::WideString;

namespace {

const char* DefaultLogFolderText() {
  for (const char* variable : {"TMP", "TEMP"}) {
    if (const char* value = std::getenv(variable)) {
      return value;
    }
  }
  return "/tmp";
}

}  // namespace

bool TryInitNetloaderSettings(HostFxrModuleParameters& parameters) {
  Log(TRACE, L"TryInitNetloaderSettings: Start initializing dotnet settings");
  const bool result = TryInitNetloaderSettingsImpl(parameters);
  // TRACE for the failure too: its reason has been logged as an error.
  Log(TRACE, result ? L"TryInitNetloaderSettings: dotnet settings set"
                    : L"TryInitNetloaderSettings: loading dotnet settings failed");
  return result;
}

bool TryInitNetloaderSettingsImpl(HostFxrModuleParameters& parameters) {
  DotnetSettingsProvider& provider = DotnetSettingsProvider::GetInstance();
  Log(TRACE, L"Settings loaded from '", provider.GetSettingsSource(), L"'");
  const WideString root = provider.GetValue(kDotnetRootFolderKey);
  if (!root.empty()) {
    Log(TRACE, L"TryInitNetloaderSettingsImpl: using dotnet root path = '", root, L"'");
    parameters.dotnetRootPath = SettingsPath(root);
  }
  if (parameters.dotnetRootPath.empty()) {
    Log(ERROR, L"TryInitNetloaderSettingsImpl: Failed to get dotnet root path from file");
    return false;
  }
  WideString folder = ExecutableFolder(kExecutableLink);
  parameters.dotnetVersionPrefix = kDotnetVersionPrefix;
  parameters.productRoot = std::move(folder);
  return true;
}

void InitNetloaderLoggingSettingsOrUseDefault(logger::LoggerSettings& settings) {
  Log(TRACE, L"InitNetloaderLoggingSettingsOrUseDefault: Start initializing logging settings");
  if (!TryInitNetloaderLoggingSettingsImpl(settings)) {
    settings.logsDir = DefaultLogFolder();
    settings.logName = kDefaultLogName;
  }
  Log(TRACE, L"InitNetloaderLoggingSettingsOrUseDefault: logging settings set");
}

bool TryInitNetloaderLoggingSettingsImpl(logger::LoggerSettings& settings) {
  DotnetSettingsProvider& provider = DotnetSettingsProvider::GetInstance();
  Log(TRACE, L"Settings loaded from '", provider.GetSettingsSource(), L"'");
  const WideString folder = provider.GetValue(kLoaderLoggingDirKey);
  if (folder.empty()) {
    Log(ERROR, L"TryInitNetloaderLoggingSettingsImpl: Failed to get logger folder path from file");
    return false;
  }
  Log(TRACE, L"TryInitNetloaderLoggingSettingsImpl: using logs dir path = '", folder, L"'");
  settings.logsDir = SettingsPath(folder);
  if (!settings.logsDir.empty()) {
    settings.logName = kDefaultLogName;
  }
  return true;
}

WideString DefaultLogFolder() {
  return tov::text::ToUtf16(DefaultLogFolderText());
}

}  // namespace netloader::quor
