#include "doctor/judge/verdicts/launcher_verdict.h"

#include <filesystem>

#include "doctor/judge/findings.h"
#include "doctor/judge/near_misses/access.h"
#include "doctor/judge/near_misses/checks.h"
#include "doctor/judge/stop.h"
#include "doctor/judge/words/text.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

// A mode without the right is mended; of what else closes a file the reader knows more.
std::string CureOfClosed(const std::string& path) {
  std::error_code ignored;
  const auto any = fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec;
  const bool isClosed = (fs::status(path, ignored).permissions() & any) != any;
  return isClosed ? CommandToPermit(path, "rx")
                  : "mount its file system with exec, and let this user enter each folder above it";
}

}  // namespace

std::optional<Verdict> JudgeLauncher(const LauncherReport& launcher) {
  constexpr int kNotExecutable = 126;
  constexpr int kNotFound = 127;
  const auto notBegun = [&](Finding finding, int status) {
    Clue clue = AtPath(launcher.path, {{"said", Printable(launcher.lacks)}, {"command", CureOfClosed(launcher.path)}});
    return Verdict{Outcome::kNotBegun, Stop::kBegin, Worded(finding, clue), {}, status};
  };
  return !launcher.is_there          ? std::optional(notBegun(Finding::kLauncherMissing, kNotFound))
         : !launcher.may_be_executed ? std::optional(notBegun(Finding::kLauncherNotExecutable, kNotExecutable))
         : !launcher.lacks.empty()   ? std::optional(notBegun(Finding::kLauncherLacksLibrary, kNotFound))
                                     : std::nullopt;
}

}  // namespace doctor
