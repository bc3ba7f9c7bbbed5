// The runtime roots that the settings name but for a mistake.
#pragma once

#include <string>
#include <vector>

#include "doctor/examine/runtime_report.h"
#include "doctor/examine/settings_report.h"

namespace doctor {

/// The folder that was probably meant by a root that is a file or lies inside an installation; empty when it is
/// neither. The `dotnet` command is followed to where it really is.
std::string RootAround(const RuntimeReport& runtime);

/// What each line for the root would name without its mistakes, and what `runtime`, where there is one, lies in.
/// Without the root that a launch takes.
std::vector<std::string> MeantRoots(const SettingsReport& settings, const RuntimeReport* runtime);

}  // namespace doctor
