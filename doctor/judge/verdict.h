// How a launch would end, and why.
#pragma once

#include <string>

#include "doctor/examine/application_report.h"
#include "doctor/examine/machine/launcher_file.h"
#include "doctor/examine/runtime_report.h"
#include "doctor/examine/settings_report.h"
#include "doctor/examine/start_report.h"
#include "doctor/judge/stop.h"
#include "doctor/judge/warning.h"
#include "doctor/judge/words/named.h"

namespace doctor {

enum class Outcome {
  kRuns,
  kStatus255,
  kAborts,      ///< With a line on standard error.
  kDies,        ///< Of a signal, without a word.
  kExits,       ///< With a status that a library chose.
  kHangs,       ///< The launcher waits for what does not come.
  kNotKnown,    ///< What was tried did not finish within the time limit.
  kNotStarted,  ///< With status 0, although the application has not run.
  kNotBegun,    ///< The launcher cannot be executed; the status is the shell's.
};

/// `line` begins a report; `{signal}`, `{status}` and `{cause}` stand for the verdict's.
struct OutcomeText {
  Outcome value;
  std::string_view code;
  std::string_view meaning;
  std::string_view line;
};

inline constexpr auto kOutcomes = std::to_array<OutcomeText>({
    {Outcome::kRuns, "runs", "as far as was tried, it would run the application", ""},
    {Outcome::kStatus255, "status-255", "it would end with status 255", "A launch would end with status 255: {cause}."},
    {Outcome::kAborts, "aborts", "it would write `message` to standard error and abort",
     "A launch would abort: {cause}."},
    {Outcome::kDies, "dies", "a signal would end it without a word", "A launch would die of {signal}: {cause}."},
    {Outcome::kExits, "exits", "a library would end it with a status of its own",
     "A launch would end with status {status}: {cause}."},
    {Outcome::kHangs, "hangs", "it would wait for ever", "A launch would wait for ever: {cause}."},
    {Outcome::kNotKnown, "not-known", "what was tried did not finish within the time limit", "Not known: {cause}."},
    {Outcome::kNotStarted, "not-started", "it would end with status 0 without running the application",
     "A launch would end with status 0 without running the application: {cause}."},
    {Outcome::kNotBegun, "not-begun", "the launcher itself could not begin", "A launch would not begin: {cause}."},
});
static_assert(IsComplete(kOutcomes, Outcome::kNotBegun));

/// How much of a launch that would run was tried.
enum class Tried { kFiles, kHost, kStart };

struct Verdict {
  Outcome outcome = Outcome::kRuns;
  Stop stop = Stop::kNone;
  Warning cause = {};  ///< Why it ends there; where it runs, what took the place of the first choice, if anything.
  std::string message = {};  ///< What the launcher would write to standard error when it aborts.
  int code = 0;              ///< Signal or exit status.
  Tried tried = Tried::kHost;

  /// Whether `cause` holds anything.
  bool HasCause() const { return !cause.text.empty(); }
};

/// All that the road of a launch depends on. What a launch would not come to is null.
struct Evidence {
  const SettingsReport* settings;
  const RuntimeReport* runtime;
  const ApplicationReport* application;
  const StartReport* start = nullptr;
  const LauncherReport* launcher = nullptr;
};

/// Walks the road to where a launch would end.
Verdict Judge(const Evidence& evidence);

/// Marks the warnings that explain the verdict. The first of them becomes its cause.
void Explain(Verdict& verdict, Warnings& warnings);

/// "A launch would run the application."
std::string VerdictLine(const Verdict& verdict);

}  // namespace doctor
