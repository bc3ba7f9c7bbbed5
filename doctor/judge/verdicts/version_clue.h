// What is said of one version of the runtime.
#pragma once

#include "doctor/examine/runtime_report.h"
#include "doctor/judge/near_misses/checks.h"

namespace doctor {

/// The clue to its library.
Clue AtVersion(const VersionReport& version);

}  // namespace doctor
