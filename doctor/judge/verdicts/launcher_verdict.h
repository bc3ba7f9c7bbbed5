// What the launcher's own file means for a launch.
#pragma once

#include <optional>

#include "doctor/examine/machine/launcher_file.h"
#include "doctor/judge/verdict.h"

namespace doctor {

/// Why it cannot begin, whatever else there is, with the status that a shell has for each reason; nothing when it can.
std::optional<Verdict> JudgeLauncher(const LauncherReport& launcher);

}  // namespace doctor
