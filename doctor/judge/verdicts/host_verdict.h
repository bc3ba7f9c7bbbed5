// What the host's answer means for a launch.
#pragma once

#include <optional>

#include "doctor/examine/probe.h"
#include "doctor/examine/runtime_report.h"
#include "doctor/judge/verdict.h"

namespace doctor {

/// How the host of that version ends the launch; nothing when it prepares the application.
std::optional<Verdict> JudgeContext(const ContextProbe& context, const VersionReport& version);

}  // namespace doctor
