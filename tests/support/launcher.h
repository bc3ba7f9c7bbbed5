// Starting the built launcher.
#pragma once

#include <filesystem>

#include "tests/support/process.h"
#include "tests/support/stand_in_host.h"

namespace tests {

/// The built executable.
[[nodiscard]] std::filesystem::path LauncherFile();

/// The launcher, told nothing.
[[nodiscard]] Command Launcher();

/// The launcher, whose stand-in hosts obey `host`.
[[nodiscard]] Command Launcher(const StandInHost& host);

}  // namespace tests
