#include "doctor/judge/verdicts/runtime_verdict.h"

#include <algorithm>
#include <filesystem>

#include "doctor/child/child.h"
#include "doctor/judge/findings.h"
#include "doctor/judge/near_misses/access.h"
#include "doctor/judge/near_misses/checks.h"
#include "doctor/judge/stop.h"
#include "doctor/judge/verdicts/endings.h"
#include "doctor/judge/verdicts/version_clue.h"
#include "doctor/judge/words/message.h"
#include "doctor/judge/words/text.h"
#include "foundation/result_code.h"
#include "foundation/strings.h"
#include "foundation/utf.h"
#include "netloader/netloaderhostfxr/src/version_discovery.h"
#include "netloader/netloaderquorcommon/src/settings_constants.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

using netloader::FxrFolderState;

Clue AtFolder(const RuntimeReport& runtime, const SettingsReport& settings) {
  const std::string folder = ToUtf8(runtime.discovery.fxr_folder);
  std::error_code ignored;
  return AtPath(folder, {{"target_word", ShellWord(fs::canonical(folder, ignored).string())},
                         {"folder", Printable(folder)},
                         {"folder_word", ShellWord(folder)},
                         {"who", RightsThatCount(folder)},
                         {"root", Printable(ToUtf8(runtime.root))},
                         {"file", Printable(settings.path)},
                         {"result", std::string(tov::ResultCodeMessage(runtime.discovery.result))},
                         {"prefix", ToUtf8(netloader::quor::kDotnetVersionPrefix)},
                         {"library", ToUtf8(netloader::kHostFxrFileName)}});
}

// Why the host/fxr folder was not searched.
Finding FolderFinding(const RuntimeReport& runtime) {
  std::error_code ignored;
  switch (runtime.discovery.state) {
    case FxrFolderState::kIsLink:
      return Finding::kFolderIsLink;
    case FxrFolderState::kNotAFolder:
      return Finding::kHostFolderNotAFolder;
    case FxrFolderState::kUnreadable:
      return Finding::kHostFolderUnreadable;
    case FxrFolderState::kNoStatus:
    case FxrFolderState::kWalked:
      break;
  }
  return fs::exists(ToUtf8(runtime.root), ignored) ? Finding::kNoHostFolder : Finding::kRootMissing;
}

Verdict NoVersionLoads(const RuntimeReport& runtime) {
  const auto candidates = std::ranges::count_if(runtime.versions, &VersionReport::is_candidate);
  const VersionReport& newest = runtime.versions.front();
  Clue clue = AtVersion(newest);
  clue.values.emplace("which", candidates == 1
                                   ? "the only .NET 6.0 runtime, " + Printable(newest.name) + ", cannot"
                                   : "none of the " + std::to_string(candidates) + " .NET 6.0 runtimes can");
  return Refuses(Stop::kNoneLoads, Finding::kNoVersionLoads, clue);
}

}  // namespace

std::optional<Verdict> JudgeRuntime(const RuntimeReport& runtime, const SettingsReport& settings) {
  const Clue folder = AtFolder(runtime, settings);
  if (runtime.discovery.state != FxrFolderState::kWalked) {
    return Refuses(Stop::kFolder, FolderFinding(runtime), folder);
  }
  if (!runtime.failure.empty()) {
    return Aborts(Stop::kNames, Finding::kVersionNotText, folder, runtime.failure);
  }
  const VersionReport* decisive = runtime.Decisive();
  if (decisive == nullptr) {
    return std::ranges::any_of(runtime.versions, &VersionReport::is_candidate)
               ? NoVersionLoads(runtime)
               : Refuses(Stop::kNoVersion, Finding::kNoVersion, folder);
  }
  if (decisive->child.end != ChildEnd::kFinished) {
    return EndsLike(decisive->child, Stop::kLoading, Finding::kEndsWhileLoading, Finding::kLoadingNotFinished,
                    AtVersion(*decisive));
  }
  return std::nullopt;
}

}  // namespace doctor
