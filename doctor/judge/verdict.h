// How a launch would end, in one line.
#pragma once

#include <string>

#include "doctor/examine/application_report.h"
#include "doctor/examine/runtime_report.h"
#include "doctor/examine/settings_report.h"
#include "doctor/judge/named.h"

namespace doctor {

enum class Outcome {
  kRuns,
  kStatus255,
  kAborts,  ///< With a line on standard error.
  kDies,    ///< Of a signal, without a word.
  kExits,   ///< With a status that a library chose.
  kHangs,
};

/// `line` is the first line of a report; `{signal}`, `{status}`, `{message}` and `{reason}` stand for the verdict's.
struct OutcomeText {
  Outcome value;
  std::string_view code;
  std::string_view meaning;
  std::string_view line;
};

inline constexpr auto kOutcomes = std::to_array<OutcomeText>({
    {Outcome::kRuns, "runs", "it would run the application", "A launch would run the application."},
    {Outcome::kStatus255, "status-255", "it would end with status 255", "A launch would end with status 255: {reason}"},
    {Outcome::kAborts, "aborts", "it would write `message` to standard error and abort",
     "A launch would abort with {message}: {reason}"},
    {Outcome::kDies, "dies", "a signal would end it without a word", "A launch would die of {signal} {reason}"},
    {Outcome::kExits, "exits", "a library would end it with a status of its own",
     "A launch would end with status {status} {reason}"},
    {Outcome::kHangs, "hangs", "it would not end", "A launch would hang {reason}"},
});
static_assert(IsComplete(kOutcomes, Outcome::kHangs));

struct Verdict {
  Outcome outcome = Outcome::kRuns;
  std::string reason = {};   ///< Why, for people; empty when it runs.
  std::string message = {};  ///< What the launcher would write to standard error when it aborts.
  int code = 0;              ///< Signal or exit status.
  std::string cure = {};     ///< What to do about it; empty when it runs.
  bool is_probed = true;     ///< False when nothing was loaded to tell.
};

/// All that the road of a launch depends on. What a launch would not come to is null.
struct Evidence {
  const SettingsReport* settings;
  const RuntimeReport* runtime;
  const ApplicationReport* application;
};

/// Walks the road to where a launch would end.
Verdict Judge(const Evidence& evidence);

/// "A launch would run the application."
std::string VerdictLine(const Verdict& verdict);

}  // namespace doctor
