// What the runtime root means for a launch.
#pragma once

#include <optional>

#include "doctor/examine/runtime_report.h"
#include "doctor/examine/settings_report.h"
#include "doctor/judge/verdict.h"

namespace doctor {

/// How searching it or loading a host ends the launch; nothing when a host is loaded.
std::optional<Verdict> JudgeRuntime(const RuntimeReport& runtime, const SettingsReport& settings);

}  // namespace doctor
