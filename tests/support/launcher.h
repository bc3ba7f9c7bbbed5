// Starting the built launcher.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/process.h"
#include "tests/support/stand_in_host.h"

namespace tests {

/// The built executable.
[[nodiscard]] std::filesystem::path LauncherFile();

/// The launcher, without arguments and variables.
[[nodiscard]] Command Launcher();

/// The launcher, whose stand-in hosts obey `host`.
[[nodiscard]] Command Launcher(const StandInHost& host);

/// Whether a launch ended with that exit status and wrote nothing.
[[nodiscard]] testing::AssertionResult EndedSilently(const Outcome& outcome, int status);

/// Whether a launch wrote `line` to standard error and then aborted. The C++ library may add words of its own below.
[[nodiscard]] testing::AssertionResult AbortedSaying(const Outcome& outcome, const std::string& line);

}  // namespace tests
