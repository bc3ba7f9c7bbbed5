#include "netloader/netloaderquorcommon/src/dotnet_settings.h"

#include <cstdlib>
#include <initializer_list>
#include <string>
#include <utility>

#include "foundation/strings.h"
#include "foundation/utf.h"
#include "netloader/logger/log.h"
#include "netloader/netloaderquorcommon/src/executable_folder.h"
#include "netloader/netloaderquorcommon/src/settings_constants.h"

namespace netloader::quor {

using enum logger::LogLevel;
using logger::Log;
using tov::WideString;

bool TryInitNetloaderSettings(HostFxrModuleParameters& parameters) {
  return detail::InitLoaderSettings(detail::Provider(), parameters);
}

bool TryInitNetloaderSettingsImpl(HostFxrModuleParameters& parameters) {
  return detail::TakeLoaderSettings(detail::Provider(), parameters);
}

void InitNetloaderLoggingSettingsOrUseDefault(logger::LoggerSettings& settings) {
  detail::InitLogSettings(detail::Provider(), settings);
}

bool TryInitNetloaderLoggingSettingsImpl(logger::LoggerSettings& settings) {
  return detail::TakeLogSettings(detail::Provider(), settings);
}

namespace detail {
namespace {

// Every step loads the settings for itself, as each can be called alone. Only the first load reads the file.
void Load(DotnetSettingsProvider& provider) {
  provider.LoadSettingsFromFile();
  Log(TRACE, L"Settings loaded from '", provider.GetSettingsSource(), L"'");
}

// A value ends at a NUL when it is used as a path, as it would for the operating system. It counts as given even when
// nothing is left of it then.
WideString AsPath(const WideString& value) {
  return value.substr(0, value.find(u'\0'));
}

const char* DefaultLogFolder() {
  for (const char* variable : {"TMP", "TEMP"}) {
    if (const char* value = std::getenv(variable)) {
      return value;
    }
  }
  return "/tmp";
}

}  // namespace

bool InitLoaderSettings(DotnetSettingsProvider& provider, HostFxrModuleParameters& parameters) {
  Log(TRACE, L"TryInitNetloaderSettings: Start initializing dotnet settings");
  const bool result = TakeLoaderSettings(provider, parameters);
  // TRACE for the failure too: its reason has been logged as an error.
  Log(TRACE, result ? L"TryInitNetloaderSettings: dotnet settings set"
                    : L"TryInitNetloaderSettings: loading dotnet settings failed");
  return result;
}

bool TakeLoaderSettings(DotnetSettingsProvider& provider, HostFxrModuleParameters& parameters) {
  Load(provider);
  TakeRoot(provider, parameters);
  if (parameters.dotnetRootPath.empty()) {
    Log(ERROR, L"TryInitNetloaderSettingsImpl: Failed to get dotnet root path from file");
    return false;
  }
  // Before anything is filled: it may throw.
  WideString folder = ExecutableFolder(kExecutableLink);
  parameters.dotnetVersionPrefix = kDotnetVersionPrefix;
  parameters.productRoot = std::move(folder);
  return true;
}

bool TakeRoot(const DotnetSettingsProvider& provider, HostFxrModuleParameters& parameters) {
  const WideString root = provider.GetValue(kDotnetRootFolderKey);
  if (root.empty()) {
    return false;  // The caller's root, if there is one, stays.
  }
  Log(TRACE, L"TryInitNetloaderSettingsImpl: using dotnet root path = '", root, L"'");
  parameters.dotnetRootPath = AsPath(root);
  return true;
}

void InitLogSettings(DotnetSettingsProvider& provider, logger::LoggerSettings& settings) {
  Log(TRACE, L"InitNetloaderLoggingSettingsOrUseDefault: Start initializing logging settings");
  if (!TakeLogSettings(provider, settings)) {
    UseDefaultLog(settings);
  }
  Log(TRACE, L"InitNetloaderLoggingSettingsOrUseDefault: logging settings set");
}

bool TakeLogSettings(DotnetSettingsProvider& provider, logger::LoggerSettings& settings) {
  Load(provider);
  if (!TakeLogFolder(provider, settings)) {
    Log(ERROR, L"TryInitNetloaderLoggingSettingsImpl: Failed to get logger folder path from file");
    return false;
  }
  return true;
}

bool TakeLogFolder(const DotnetSettingsProvider& provider, logger::LoggerSettings& settings) {
  const WideString folder = provider.GetValue(kLoaderLoggingDirKey);
  if (folder.empty()) {
    return false;
  }
  Log(TRACE, L"TryInitNetloaderLoggingSettingsImpl: using logs dir path = '", folder, L"'");
  settings.logsDir = AsPath(folder);
  if (!settings.logsDir.empty()) {
    settings.logName = kDefaultLogName;
  }
  return true;
}

void UseDefaultLog(logger::LoggerSettings& settings) {
  // Lenient: a folder that cannot be read as text is an empty one, and nothing is reported.
  settings.logsDir = tov::text::ToUtf16(DefaultLogFolder());
  settings.logName = kDefaultLogName;
}

}  // namespace detail

}  // namespace netloader::quor
