// What the launching user may not read or enter: what the doctor says of it, and how the launch ends.
#include <gtest/gtest.h>

#include <string>

#include "tests/prediction/fault.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

fs::path VarOf(const char* folder) {
  return fs::path("/var/opt/morvath") / folder;
}

void Close(KnownWorld& world, const fs::path& path, unsigned int rights) {
  AsOrdinaryUser(world);
  fs::permissions(path, fs::perms{rights});
}

TEST(RightsFaults, AnOrdinaryUserIsToldWhatIsClosedToHim) {
  if (!ThereIsAnOrdinaryUser()) {
    GTEST_SKIP() << "no other user can start the built programs";
  }
  const Fault faults[] = {
      {"nothing", [](KnownWorld& world) { AsOrdinaryUser(world); }, "runs", "", "A launch would run the application",
       ""},
      {"the settings", [](KnownWorld& world) { Close(world, kSettingsPath, 0600); }, "aborts", "settings-unreadable",
       "the settings file cannot be read", "chmod o+r"},
      {"the settings to everyone", [](KnownWorld& world) { Close(world, kSettingsPath, 0); }, "aborts",
       "settings-unreadable", "the settings file cannot be read", "chmod o+r"},
      {"the folder of the settings",
       [](KnownWorld& world) { Close(world, fs::path(kSettingsPath).parent_path(), 0700); }, "aborts",
       "folder-not-entered", "this user cannot enter /var/opt/morvath/quor/common", "chmod o+rx"},
      {"the folder above the settings' folder", [](KnownWorld& world) { Close(world, VarOf("quor"), 0750); }, "aborts",
       "folder-not-entered", "this user cannot enter /var/opt/morvath/quor", "chmod o+rx"},
      {"the folder of the settings, which can only be listed",
       [](KnownWorld& world) { Close(world, fs::path(kSettingsPath).parent_path(), 0744); }, "aborts",
       "folder-not-entered", "this user cannot enter /var/opt/morvath/quor/common", "chmod o+rx"},
      {"the folder of the settings, which cannot be listed",
       [](KnownWorld& world) { Close(world, fs::path(kSettingsPath).parent_path(), 0711); }, "runs", "",
       "A launch would run the application", ""},
      {"the root", [](KnownWorld& world) { Close(world, world.runtime.Root(), 0700); }, "status-255",
       "folder-not-entered", "this user cannot enter /", "chmod o+rx"},
      {"the root, which can only be listed", [](KnownWorld& world) { Close(world, world.runtime.Root(), 0744); },
       "status-255", "folder-not-entered", "this user cannot enter /", "chmod o+rx"},
      {"the host folder", [](KnownWorld& world) { Close(world, world.runtime.Root() / "host", 0700); }, "status-255",
       "folder-not-entered", "/host", "chmod o+rx"},
      {"the fxr folder", [](KnownWorld& world) { Close(world, world.runtime.FxrFolder(), 0700); }, "status-255",
       "folder-not-entered", "/host/fxr", "chmod o+rx"},
      {"the fxr folder, which can only be listed",
       [](KnownWorld& world) { Close(world, world.runtime.FxrFolder(), 0744); }, "status-255", "folder-not-entered",
       "/host/fxr", "chmod o+rx"},
      {"the fxr folder, which cannot be listed",
       [](KnownWorld& world) { Close(world, world.runtime.FxrFolder(), 0711); }, "status-255", "folder-not-entered",
       "/host/fxr", "chmod o+rx"},
      {"the version folder", [](KnownWorld& world) { Close(world, world.runtime.FxrFolder() / "6.0.36", 0700); },
       "status-255", "folder-not-entered", "/6.0.36", "chmod o+rx"},
      {"the version folder, which can only be listed",
       [](KnownWorld& world) { Close(world, world.runtime.FxrFolder() / "6.0.36", 0744); }, "status-255",
       "folder-not-entered", "/6.0.36", "chmod o+rx"},
      {"the version folder, which cannot be listed",
       [](KnownWorld& world) { Close(world, world.runtime.FxrFolder() / "6.0.36", 0711); }, "status-255",
       "folder-not-entered", "/6.0.36", "chmod o+rx"},
      {"the library", [](KnownWorld& world) { Close(world, world.runtime.HostFile("6.0.36"), 0600); }, "status-255",
       "file-not-read", "this user cannot read /", "chmod o+r"},
      {"the library of the newer of two",
       [](KnownWorld& world) {
         world.runtime.AddHost("6.0.5");
         Close(world, world.runtime.HostFile("6.0.36"), 0600);
       },
       "runs", "older-runtime", "with the older runtime 6.0.5", "chmod o+r"},
      {"the folder of the newer of two",
       [](KnownWorld& world) {
         world.runtime.AddHost("6.0.5");
         Close(world, world.runtime.FxrFolder() / "6.0.36", 0700);
       },
       "runs", "", "A launch would run the application", ""},
      {"the library, which may be read and not executed",
       [](KnownWorld& world) { Close(world, world.runtime.HostFile("6.0.36"), 0444); }, "runs", "",
       "A launch would run the application", ""},
  };
  Check(faults);
}

void CloseToRoot(KnownWorld& world, const fs::path& path, unsigned int rights) {
  fs::permissions(path, fs::perms{rights});
  world.start.reads_everything = false;
}

TEST(RightsFaults, AnOwnerIsToldWhatHeHasClosedToHimself) {
  const Fault faults[] = {
      {"the settings", [](KnownWorld& world) { CloseToRoot(world, kSettingsPath, 0); }, "aborts", "settings-unreadable",
       "the settings file cannot be read", "chmod u+r"},
      {"the folder of the settings",
       [](KnownWorld& world) { CloseToRoot(world, fs::path(kSettingsPath).parent_path(), 0); }, "aborts",
       "folder-not-entered", "this user cannot enter", "chmod u+rx"},
      {"the root", [](KnownWorld& world) { CloseToRoot(world, world.runtime.Root(), 0077); }, "status-255",
       "folder-not-entered", "this user cannot enter", "chmod u+rx"},
      {"the fxr folder", [](KnownWorld& world) { CloseToRoot(world, world.runtime.FxrFolder(), 0111); }, "status-255",
       "folder-not-entered", "this user cannot enter", "chmod u+rx"},
      {"the library", [](KnownWorld& world) { CloseToRoot(world, world.runtime.HostFile("6.0.36"), 0); }, "status-255",
       "file-not-read", "this user cannot read /", "chmod u+r"},
  };
  Check(faults);
}

}  // namespace
}  // namespace tests
