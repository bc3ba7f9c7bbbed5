// All that support asks for, in one text.
#pragma once

#include <string>
#include <vector>

#include "doctor/examine/machine/listing.h"
#include "doctor/judge/diagnosis.h"
#include "doctor/report/head.h"

namespace doctor {

/// What the machine holds beside what a diagnosis needs.
struct Surrounds {
  Listing way;                         ///< The folders on the way to each of the following.
  std::vector<Listing> folders;        ///< What is in those that a launch looks into.
  std::vector<std::string> variables;  ///< Names of variables that the runtime or the dynamic loader obeys.
};

/// Looks at the folders that a launch looks into, and at the names in the environment. Values are left alone.
Surrounds LookAtSurrounds(const Diagnosis& diagnosis);

/// The text with every detail, the listings, the loader's log of the walk (or why there is none) and the JSON.
std::string SupportReport(const Diagnosis& diagnosis, const Head& head, const Surrounds& surrounds,
                          const std::string& log);

}  // namespace doctor
