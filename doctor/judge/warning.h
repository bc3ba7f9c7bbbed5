// A near miss: something that a person probably did not mean.
#pragma once

#include <string>
#include <vector>

namespace doctor {

/// Never changes what the launcher does. All texts but the code are for people.
struct Warning {
  std::string code;   ///< A stable name, such as "blank-at-end".
  std::string place;  ///< The line or path.
  std::string text;   ///< What is odd, and what comes of it.
  std::string cure;   ///< What to do about it.
};

using Warnings = std::vector<Warning>;

}  // namespace doctor
