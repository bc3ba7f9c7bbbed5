// A diagnosis for people.
#pragma once

#include <string>

#include "doctor/judge/diagnosis.h"

namespace doctor {

/// The verdict first, then the warnings, then each step of the road. Fits 100 columns and holds nothing that a terminal
/// would obey but the colours, if they are asked for.
std::string TextReport(const Diagnosis& diagnosis, bool colored);

}  // namespace doctor
