// The runtime root in a text report.
#pragma once

#include <optional>

#include "doctor/examine/runtime_report.h"
#include "doctor/report/page.h"

namespace doctor {

/// The versions with what a launch makes of each.
void PutRuntime(Page& page, const std::optional<RuntimeReport>& runtime);

}  // namespace doctor
