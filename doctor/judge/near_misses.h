// What looks like a mistake in what was found, although a launch takes it as it stands.
#pragma once

#include "doctor/examine/application_report.h"
#include "doctor/examine/runtime_report.h"
#include "doctor/examine/settings_report.h"
#include "doctor/judge/warning.h"

namespace doctor {

/// Blanks, carriage returns, quotes, letter case, byte-order mark, repeated keys.
Warnings SettingsNearMisses(const SettingsReport& report);

/// The root, links, folders that cannot be entered, noexec, and what `VersionNearMisses` finds.
Warnings RuntimeNearMisses(const RuntimeReport& report);

/// Odd version numbers, other machines, cut libraries, other runtimes.
Warnings VersionNearMisses(const RuntimeReport& report);

/// A TMP that is set but empty.
Warnings EnvironmentNearMisses(const SettingsReport& settings);

/// A missing assembly, a framework that the root does not have.
Warnings ApplicationNearMisses(const ApplicationReport& report);

}  // namespace doctor
