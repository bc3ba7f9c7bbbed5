// The start of the runtime in a text report.
#pragma once

#include <optional>

#include "doctor/examine/start_report.h"
#include "doctor/report/page.h"

namespace doctor {

/// Whether it starts, and which files are broken.
void PutStart(Page& page, const std::optional<StartReport>& start);

}  // namespace doctor
