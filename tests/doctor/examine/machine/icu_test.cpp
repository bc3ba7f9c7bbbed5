#include "doctor/examine/machine/icu.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "tests/support/scoped_environment.h"
#include "tests/support/stand_in_host.h"
#include "tests/support/temp_folder.h"

namespace {

// Whether the libraries of ICU are to be had under their plain names, or not at all; what the system has when empty.
std::optional<bool> has_plain_icu;

}  // namespace

// In place of the C library's: a system that has other versions of ICU.
extern "C" void* dlopen(const char* file, int mode) noexcept {
  const std::string_view name = file != nullptr ? file : "";
  if (has_plain_icu && name.starts_with("libicu")) {
    return *has_plain_icu && name.ends_with(".so") ? ::dlopen(nullptr, mode) : nullptr;
  }
  return reinterpret_cast<void* (*)(const char*, int)>(::dlsym(RTLD_NEXT, "dlopen"))(file, mode);
}

namespace doctor {
namespace {

TEST(Icu, WithoutAVersionItIsTheSystemsAsWell) {
  tests::ScopedEnvironment environment;
  environment.Remove("DOTNET_SYSTEM_GLOBALIZATION_APPLOCALICU");

  has_plain_icu = true;
  EXPECT_TRUE(HasIcu({}, "/nothing", {}));
  has_plain_icu = false;
  EXPECT_FALSE(HasIcu({}, "/nothing", {}));
  has_plain_icu.reset();
}

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
