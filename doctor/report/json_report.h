// A diagnosis for machines.
#pragma once

#include <string>

#include "doctor/judge/diagnosis.h"
#include "doctor/report/head.h"

namespace doctor {

/// Raised when a name or a meaning changes; names are only added otherwise.
inline constexpr int kJsonSchema = 2;

/// One JSON object and a newline: valid UTF-8 whatever the paths hold, with U+FFFD for what is not. docs/doctor.md
/// describes it.
std::string JsonReport(const Diagnosis& diagnosis, const Head& head = {});

}  // namespace doctor
