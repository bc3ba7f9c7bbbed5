// A diagnosis for people.
#pragma once

#include <string>

#include "doctor/judge/diagnosis.h"
#include "doctor/report/head.h"
#include "doctor/report/page.h"

namespace doctor {

struct TextStyle {
  bool colored = false;
  bool verbose = false;  ///< Whether every part is shown in detail, not only those where something is wrong.
  std::size_t width = kPageWidth;
};

/// The opening (verdict with its cause, meaning, cure), one line for each part of the road, what else was noticed, then
/// the details. Fits the width, but for commands and for longer words, such as paths, which are never broken; holds
/// nothing that a terminal would obey but the colours, if they are asked for.
std::string TextReport(const Diagnosis& diagnosis, const TextStyle& style, const Head& head = {});

}  // namespace doctor
