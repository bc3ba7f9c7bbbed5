// Something that ends a launch, or that a person probably did not mean.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "doctor/judge/findings.h"

namespace doctor {

/// All texts are for people, and printable.
struct Warning {
  Finding finding = {};
  std::string place = {};    ///< The line or path.
  std::string text = {};     ///< What is so, as a clause.
  std::string meaning = {};  ///< What comes of it, as a sentence; may be empty.
  std::string cure = {};     ///< What to do about it, as a command where there is one.
  bool may_decide = true;    ///< False when it concerns something that a launch does not depend on.
  bool decides = false;      ///< Whether it explains why the launch ends.
};

/// All that was noticed, but for what there may be too much of.
struct Warnings : std::vector<Warning> {
  using std::vector<Warning>::vector;

  std::size_t left_out = 0;  ///< How many more there are of a finding of which only the first are kept.
};

}  // namespace doctor
