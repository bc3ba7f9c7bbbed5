#include "doctor/judge/verdict.h"

#include <algorithm>
#include <optional>

#include "doctor/child/signal_name.h"
#include "doctor/examine/broken_file.h"
#include "doctor/examine/start_probe.h"
#include "doctor/judge/findings.h"
#include "doctor/judge/near_misses/broken_file_clue.h"
#include "doctor/judge/near_misses/checks.h"
#include "doctor/judge/verdicts/host_verdict.h"
#include "doctor/judge/verdicts/launcher_verdict.h"
#include "doctor/judge/verdicts/runtime_verdict.h"
#include "doctor/judge/verdicts/settings_verdict.h"
#include "doctor/judge/verdicts/start_verdict.h"
#include "doctor/judge/verdicts/version_clue.h"
#include "doctor/judge/words/message.h"
#include "doctor/judge/words/text.h"

namespace doctor {
namespace {

// A launch that would run, with a word about a newer version that it passes over, or a file that it will miss.
Verdict Runs(const RuntimeReport& runtime, Tried tried, const StartReport* start = nullptr) {
  Verdict verdict;
  verdict.tried = tried;
  if (const VersionReport& newest = runtime.versions.front(); &newest != runtime.Decisive()) {
    Clue clue = AtVersion(newest);
    clue.values.emplace("chosen", Printable(runtime.Decisive()->name));
    verdict.cause = Worded(Finding::kOlderRuntime, clue);
  } else if (start != nullptr && start->has_icu == false) {
    verdict.cause =
        Worded(Finding::kNoIcu, {{}, {{"sentence", "which ends as soon as it needs ICU, which is missing"}}});
  } else if (const BrokenFile* named = start != nullptr ? start->Named() : nullptr) {
    verdict.cause = Worded(Finding::kNamedFileBroken, AtBrokenFile(*named));
  }
  return verdict;
}

// What is known of the library that was passed over tells better what to do.
void TakeCureOfPlace(Warning& cause, const Warnings& warnings) {
  const auto same = std::ranges::find(warnings, cause.place, &Warning::place);
  if (same != warnings.end()) {
    cause.cure = same->cure;
  }
}

}  // namespace

Verdict Judge(const Evidence& evidence) {
  if (auto verdict = evidence.launcher != nullptr ? JudgeLauncher(*evidence.launcher) : std::nullopt) {
    return *verdict;
  }
  if (auto verdict = JudgeSettings(*evidence.settings)) {
    return *verdict;
  }
  if (auto verdict = JudgeRuntime(*evidence.runtime, *evidence.settings)) {
    return *verdict;
  }
  if (evidence.application == nullptr || !evidence.application->context) {
    return Runs(*evidence.runtime, Tried::kFiles);
  }
  if (auto verdict = JudgeContext(*evidence.application->context, *evidence.runtime->Decisive())) {
    return *verdict;
  }
  if (auto verdict = evidence.start != nullptr ? JudgeStart(*evidence.start) : std::nullopt) {
    return *verdict;
  }
  const bool isTried = evidence.start != nullptr && evidence.start->probe.was_tried;
  return Runs(*evidence.runtime, isTried ? Tried::kStart : Tried::kHost, evidence.start);
}

void Explain(Verdict& verdict, Warnings& warnings) {
  for (Warning& warning : warnings) {
    warning.decides = warning.may_decide && Contains(RowOf(kFindings, warning.finding).explains, verdict.stop);
  }
  if (const auto first = std::ranges::find_if(warnings, &Warning::decides); first != warnings.end()) {
    verdict.cause = *first;
  } else if (verdict.cause.finding == Finding::kOlderRuntime && verdict.HasCause()) {
    TakeCureOfPlace(verdict.cause, warnings);
  }
}

std::string VerdictLine(const Verdict& verdict) {
  if (verdict.outcome == Outcome::kRuns) {
    const std::string with = verdict.HasCause() ? ", " + verdict.cause.text : "";
    switch (verdict.tried) {
      case Tried::kFiles:
        return "Nothing was loaded: the files look sound" + with + "; starting the runtime was not tried.";
      case Tried::kHost:
        return "The host accepts the application" + with + "; starting the runtime was not tried.";
      case Tried::kStart:
        return "A launch would run the application" + with + ".";
    }
  }
  return Filled(
      RowOf(kOutcomes, verdict.outcome).line,
      {{"cause", verdict.cause.text}, {"signal", SignalName(verdict.code)}, {"status", std::to_string(verdict.code)}});
}

}  // namespace doctor
