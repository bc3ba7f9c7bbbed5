// What the settings mean for a launch.
#pragma once

#include <optional>

#include "doctor/examine/settings_report.h"
#include "doctor/judge/verdict.h"

namespace doctor {

/// How they end it; nothing when they name a runtime root.
std::optional<Verdict> JudgeSettings(const SettingsReport& settings);

}  // namespace doctor
