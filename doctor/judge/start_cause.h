// Why a runtime does not start, or starts and does not reach the application, in words.
#pragma once

#include <optional>

#include "doctor/examine/start_report.h"
#include "doctor/judge/warning.h"

namespace doctor {

/// The cause that fits best; empty when the application would be reached. A start that was not tried counts as one that
/// succeeds.
std::optional<Warning> CauseOf(const StartReport& start);

}  // namespace doctor
