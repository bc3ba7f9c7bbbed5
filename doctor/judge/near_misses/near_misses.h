// What looks like a mistake in what was found, although a launch takes it as it stands.
#pragma once

#include "doctor/examine/application_report.h"
#include "doctor/examine/machine/open_paths.h"
#include "doctor/examine/runtime_report.h"
#include "doctor/examine/settings_report.h"
#include "doctor/examine/start_report.h"
#include "doctor/judge/warning.h"

namespace doctor {

/// The file as a whole (`SettingsFileNearMisses`), then line by line: blanks, carriage returns, quotes, letter case and
/// other slips of the pen, repeated keys (the first 1,000).
Warnings SettingsNearMisses(const SettingsReport& report);

/// A folder or a file of another name in place of the settings, UTF-16, folders that cannot be entered.
Warnings SettingsFileNearMisses(const SettingsReport& report);

/// The root, links, folders that cannot be entered, noexec, and what `VersionNearMisses` finds.
Warnings RuntimeNearMisses(const RuntimeReport& report);

/// Odd version numbers, other machines, cut libraries, other runtimes.
Warnings VersionNearMisses(const RuntimeReport& report);

/// A TMP that is set but empty.
Warnings EnvironmentNearMisses(const SettingsReport& settings);

/// What users other than root and the one that launches may change.
Warnings OpenPathNearMisses(const std::vector<OpenPath>& open);

/// A missing assembly, a configuration that the host cannot use; where the root holds a version at all, what is wrong
/// with the frameworks.
Warnings ApplicationNearMisses(const ApplicationReport& report, bool hasVersion);

/// Broken files that the application may come to need, but for the one that ends the launch.
Warnings StartNearMisses(const StartReport& report);

}  // namespace doctor
