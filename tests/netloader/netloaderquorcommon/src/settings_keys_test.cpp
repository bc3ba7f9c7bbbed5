#include "netloader/netloaderquorcommon/src/settings_keys.h"

#include <gtest/gtest.h>

namespace netloader::quor::detail {
namespace {

TEST(SettingsKeys, AreFoundByTheirExactNames) {
  EXPECT_EQ(FindKey(u"DotnetRootFolder"), SettingsKey::kDotnetRootFolder);
  EXPECT_EQ(FindKey(u"LoaderLoggingDir"), SettingsKey::kLoaderLoggingDir);
  for (const std::u16string_view name : {u"", u"dotnetrootfolder", u"DotnetRootFolder ", u"ProductRootDir"}) {
    EXPECT_EQ(FindKey(name), std::nullopt);
  }
}

TEST(SettingsKeys, HaveTheNamesThatTheyAreFoundBy) {
  EXPECT_EQ(NameOf(SettingsKey::kDotnetRootFolder), u"DotnetRootFolder");
  EXPECT_EQ(NameOf(SettingsKey::kLoaderLoggingDir), u"LoaderLoggingDir");
}

TEST(SettingsKeys, ATableThatLacksOneOrHasAnotherOrderIsNotOneForEveryKey) {
  constexpr auto kShort = std::to_array<SettingsKeyName>({{SettingsKey::kDotnetRootFolder, u""}});
  constexpr auto kTurned =
      std::to_array<SettingsKeyName>({{SettingsKey::kLoaderLoggingDir, u""}, {SettingsKey::kDotnetRootFolder, u""}});

  EXPECT_FALSE(HasARowForEveryKey(kShort));
  EXPECT_FALSE(HasARowForEveryKey(kTurned));
}

}  // namespace
}  // namespace netloader::quor::detail
