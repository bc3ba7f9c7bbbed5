#include "doctor/judge/verdicts/host_verdict.h"

#include "doctor/child/child.h"
#include "doctor/judge/findings.h"
#include "doctor/judge/near_misses/checks.h"
#include "doctor/judge/stop.h"
#include "doctor/judge/verdicts/endings.h"
#include "doctor/judge/verdicts/version_clue.h"
#include "doctor/judge/words/message.h"
#include "doctor/judge/words/status_names.h"
#include "doctor/judge/words/text.h"

namespace doctor {

std::optional<Verdict> JudgeContext(const ContextProbe& context, const VersionReport& version) {
  Clue clue = AtVersion(version);
  if (context.child.end != ChildEnd::kFinished) {
    return EndsLike(context.child, Stop::kInHost, Finding::kEndsInHost, Finding::kHostNotFinished, std::move(clue));
  }
  if (context.IsUsable()) {
    return std::nullopt;
  }
  clue.values.emplace("status", Hex(context.result));
  clue.values.emplace("name", HostStatusName(context.result));
  const std::string_view words = StatusWords(context.result);
  clue.values.emplace("why", words.empty() ? "" : ": " + std::string(words));
  const std::string line = LastLine(context.host_text.empty() ? context.child.output : context.host_text);
  clue.values.emplace("says", line.empty() ? "" : " It says: " + Printable(line));
  return Refuses(Stop::kContext, context.result == 0 ? Finding::kNoContext : Finding::kHostRefuses, clue);
}

}  // namespace doctor
