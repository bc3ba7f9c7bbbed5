#include "netloader/netloaderquorcommon/src/settings_constants.h"

#include <gtest/gtest.h>

namespace netloader::quor {
namespace {

TEST(SettingsConstants, AreTheProductsNames) {
  EXPECT_EQ(kDotnetRootFolderKey, u"DotnetRootFolder");
  EXPECT_EQ(kLoaderLoggingDirKey, u"LoaderLoggingDir");
  EXPECT_EQ(kProductRootDirKey, u"ProductRootDir");
  EXPECT_EQ(kDotnetVersionPrefix, u"6.0.");
  EXPECT_EQ(kDefaultLogName, u"netloader_quor_common");
  EXPECT_EQ(kCommonDataFolder, u"/var/opt/morvath/quor/common");
  EXPECT_EQ(kSettingsFileName, u"dotnet_settings.ini");
  EXPECT_EQ(kDotnetFolderName, u"dotnet");
  EXPECT_EQ(kTargetFrameworkName, u"net6.0");
  EXPECT_EQ(kInMemorySettingsMarker, u"DEBUG_IN_MEMORY_SETTINGS");
}

TEST(SettingsConstants, TheSettingsFileHasOnePlace) {
  EXPECT_EQ(detail::SettingsFilePath(), u"/var/opt/morvath/quor/common/dotnet_settings.ini");
  EXPECT_EQ(kCommonDataFolder, u"/var/opt/morvath/quor/common");
}

}  // namespace
}  // namespace netloader::quor
