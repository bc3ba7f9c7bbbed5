// One line for each part of the road.
#pragma once

#include <string>
#include <vector>

#include "doctor/judge/diagnosis.h"
#include "doctor/judge/stop.h"

namespace doctor {

/// How a part of the road fares.
enum class Mark {
  kOk,
  kNo,          ///< The launch ends because of it.
  kNotReached,  ///< The launch ends before it, or it was not tried.
};

struct StationSummary {
  Station station;
  std::string_view name;
  Mark mark;
  std::string words;  ///< Printable.
  std::string codes;  ///< "[code] [code]" of what was noticed there; empty when nothing.
};

/// One for each part, in the order of the road.
std::vector<StationSummary> Summary(const Diagnosis& diagnosis);

}  // namespace doctor
