#include "doctor/judge/verdicts/start_verdict.h"

#include <csignal>
#include <utility>

#include "doctor/child/child.h"
#include "doctor/examine/broken_file.h"
#include "doctor/examine/start_probe.h"
#include "doctor/judge/start_cause.h"
#include "doctor/judge/stop.h"
#include "doctor/judge/verdicts/endings.h"
#include "doctor/judge/warning.h"

namespace doctor {

std::optional<Verdict> JudgeStart(const StartReport& start) {
  std::optional<Warning> cause = CauseOf(start);
  if (!cause) {
    return std::nullopt;
  }
  if (start.probe.child.end != ChildEnd::kFinished) {
    return EndsLike(start.probe.child, Stop::kStart, std::move(*cause));
  }
  if (start.probe.was_tried && start.probe.result != 0) {
    return Verdict{Outcome::kNotStarted, Stop::kStart, std::move(*cause)};
  }
  // The runtime starts without its compiler, and ends when it needs it; of a cut one it maps what is not there.
  const int signal = start.Decisive()->is_cut_library ? SIGBUS : SIGABRT;
  return Verdict{Outcome::kDies, Stop::kStart, std::move(*cause), {}, signal};
}

}  // namespace doctor
