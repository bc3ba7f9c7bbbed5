// The environment in a text report.
#pragma once

#include "doctor/examine/environment_report.h"
#include "doctor/report/page.h"

namespace doctor {

/// What a launch does to its variables, then those of others that the runtime obeys.
void PutEnvironment(Page& page, const EnvironmentReport& environment);

}  // namespace doctor
