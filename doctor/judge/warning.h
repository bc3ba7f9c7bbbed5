// A near miss: something that a person probably did not mean.
#pragma once

#include <string>
#include <vector>

#include "doctor/judge/findings.h"

namespace doctor {

/// Never changes what the launcher does. All texts are for people, and printable.
struct Warning {
  Finding finding = {};
  std::string place;  ///< The line or path.
  std::string text;   ///< What is odd, and what comes of it.
  std::string cure;   ///< What to do about it.
};

using Warnings = std::vector<Warning>;

}  // namespace doctor
