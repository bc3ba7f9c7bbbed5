#include "doctor/examine/machine/icu.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/scoped_environment.h"
#include "tests/support/stand_in_host.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

TEST(Icu, TheVariableWinsOverTheFile) {
  tests::ScopedEnvironment environment;
  environment.Remove("DOTNET_SYSTEM_GLOBALIZATION_INVARIANT");
  EXPECT_TRUE(IsInvariant({true}));
  EXPECT_FALSE(IsInvariant({false}));

  environment.Set("DOTNET_SYSTEM_GLOBALIZATION_INVARIANT", "True");
  EXPECT_TRUE(IsInvariant({false}));
  environment.Set("DOTNET_SYSTEM_GLOBALIZATION_INVARIANT", "0");
  EXPECT_FALSE(IsInvariant({true}));
}

TEST(Icu, TheOneThatComesWithTheApplicationIsLookedForBesideIt) {
  tests::ScopedEnvironment environment;
  environment.Remove("DOTNET_SYSTEM_GLOBALIZATION_APPLOCALICU");
  const tests::TempFolder folder;
  const std::string beside = (folder / "x").parent_path().string();
  EXPECT_FALSE(HasIcu({false, "own:99.1"}, beside, {}));

  std::filesystem::copy_file(tests::HostLibrary(), folder / "libicuucown.so.99.1");
  EXPECT_FALSE(HasIcu({false, "own:99.1"}, beside, {})) << "one of two libraries";
  std::filesystem::copy_file(tests::HostLibrary(), folder / "libicui18nown.so.99.1");
  EXPECT_TRUE(HasIcu({false, "own:99.1"}, beside, {}));
}

}  // namespace
}  // namespace doctor
