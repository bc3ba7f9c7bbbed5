// Runtimes elsewhere on this machine that would do, or that explain why one is not whole.
#pragma once

#include <vector>

#include "doctor/examine/other_roots.h"
#include "doctor/examine/runtime_report.h"
#include "doctor/examine/settings_report.h"
#include "doctor/judge/verdict.h"
#include "doctor/judge/warning.h"

namespace doctor {

/// All that is known where another root is looked for.
struct RootSearch {
  const SettingsReport& settings;
  const RuntimeReport* runtime;  ///< Null when no root is known.
  const Verdict& verdict;
  const Warnings& warnings;  ///< What was noticed on the road.
  const std::vector<OtherRoot>& roots;
};

/// Whether a launch ends for want of a runtime, so that another root could help.
bool WantsOtherRoot(const Verdict& verdict, const RuntimeReport* runtime);

/// A host and frameworks that are installed in two folders; else a root that would serve, unless what was noticed is
/// mended better where it is.
Warnings OtherRootNearMisses(const RootSearch& search);

}  // namespace doctor
