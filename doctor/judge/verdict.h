// How a launch would end, in one line.
#pragma once

#include <string>

#include "doctor/examine/application_report.h"
#include "doctor/examine/runtime_report.h"
#include "doctor/examine/settings_report.h"

namespace doctor {

enum class Outcome {
  kRuns,
  kStatus255,
  kAborts,  ///< With a line on standard error.
  kDies,    ///< Of a signal, without a word.
  kExits,   ///< With a status that a library chose.
  kHangs,
};

struct Verdict {
  Outcome outcome;
  std::string reason = {};   ///< Why, for people; empty when it runs.
  std::string message = {};  ///< What the launcher would write to standard error when it aborts.
  int code = 0;              ///< Signal or exit status.
  std::string cure = {};     ///< What to do about it; empty when it runs.
  bool is_probed = true;     ///< False when nothing was loaded to tell.
};

/// All that the road of a launch depends on. What a launch would not come to is null.
struct Evidence {
  const SettingsReport* settings;
  std::string folder_failure;  ///< What telling the executable's folder throws; empty when nothing.
  const RuntimeReport* runtime;
  const ApplicationReport* application;
};

/// Walks the road to where a launch would end.
Verdict Judge(const Evidence& evidence);

/// "A launch would run the application."
std::string VerdictLine(const Verdict& verdict);

/// "runs", "status-255", "aborts", "dies", "exits", "hangs".
std::string_view OutcomeName(Outcome outcome);

}  // namespace doctor
