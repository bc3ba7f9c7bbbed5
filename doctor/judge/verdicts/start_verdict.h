// What the start of the runtime means for a launch.
#pragma once

#include <optional>

#include "doctor/examine/start_report.h"
#include "doctor/judge/verdict.h"

namespace doctor {

/// How starting it, or a file that it needs, ends the launch; nothing when the application is reached. A runtime that
/// reports a failure has its launch end with status 0, as the launcher drops what running gives.
std::optional<Verdict> JudgeStart(const StartReport& start);

}  // namespace doctor
