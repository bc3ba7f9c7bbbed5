// Whether the launcher beside the doctor can begin at all.
#pragma once

#include <string>

#include "doctor/child/patience.h"

namespace doctor {

struct LauncherReport {
  std::string path = {};  ///< Where it belongs.
  bool is_there = false;
  bool may_be_executed = false;  ///< Whether this user may execute it.
  /// Why the dynamic loader cannot load it with its own libraries, in its words; empty when it can, or was not asked.
  std::string lacks = {};

  bool CanBegin() const { return is_there && may_be_executed && lacks.empty(); }
};

/// The path of the launcher in the folder of this executable. Empty where there is none, unless that is the folder
/// which the product is installed in.
std::string LauncherBeside();

/// Looks at the file. With `load` the dynamic loader lists its libraries in a child; nothing of it runs.
LauncherReport ExamineLauncher(const std::string& path, bool load, const Patience& patience);

}  // namespace doctor
