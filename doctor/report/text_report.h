// A diagnosis for people.
#pragma once

#include <string>

#include "doctor/judge/diagnosis.h"

namespace doctor {

struct TextStyle {
  bool colored = false;
  bool verbose = false;  ///< Whether every part is shown in detail, not only those where something is wrong.
};

/// The opening (verdict with its cause, meaning, cure), one line for each part of the road, what else was noticed, then
/// the details. Fits 100 columns, but for commands, which are never broken; holds nothing that a terminal would obey
/// but the colours, if they are asked for.
std::string TextReport(const Diagnosis& diagnosis, const TextStyle& style);

}  // namespace doctor
