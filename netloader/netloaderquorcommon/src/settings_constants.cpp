#include "netloader/netloaderquorcommon/src/settings_constants.h"

#include <string_view>

#include "foundation/path.h"
#include "netloader/netloaderquorcommon/src/settings_keys.h"

namespace netloader::quor {

using tov::WideString;

const WideString kDotnetRootFolderKey(NameOf(detail::SettingsKey::kDotnetRootFolder));
const WideString kLoaderLoggingDirKey(NameOf(detail::SettingsKey::kLoaderLoggingDir));
const WideString kProductRootDirKey = u"ProductRootDir";
const WideString kDotnetVersionPrefix = u"6.0.";
const WideString kDefaultLogName = u"netloader_quor_common";
const WideString kCommonDataFolder = u"/var/opt/morvath/quor/common";
const WideString kSettingsFileName = u"dotnet_settings.ini";
const WideString kDotnetFolderName = u"dotnet";
const WideString kTargetFrameworkName = u"net6.0";
const WideString kInMemorySettingsMarker = u"DEBUG_IN_MEMORY_SETTINGS";

WideString detail::SettingsFilePath() {
  WideString path = kCommonDataFolder;
  return tov::filesystem::detail::PathImplBase::PathAppend(path, kSettingsFileName);
}

}  // namespace netloader::quor
