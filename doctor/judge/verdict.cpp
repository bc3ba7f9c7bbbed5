#include "doctor/judge/verdict.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <optional>

#include "doctor/child/signal_name.h"
#include "doctor/judge/near_misses/access.h"
#include "doctor/judge/near_misses/broken_file_clue.h"
#include "doctor/judge/near_misses/checks.h"
#include "doctor/judge/start_cause.h"
#include "doctor/judge/words/status_names.h"
#include "doctor/judge/words/text.h"
#include "doctor/judge/words/time_limit.h"
#include "doctor/judge/words/version_reasons.h"
#include "foundation/result_code.h"
#include "launcher/product/last_words.h"
#include "netloader/netloaderhostfxr/src/loadermodule.h"
#include "netloader/netloaderquorcommon/src/settings_constants.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;
using netloader::FxrFolderState;

std::string Line(const launcher::LastWords& words) {
  return std::string(words.head) + words.what;
}

Verdict Refuses(Stop stop, Finding finding, const Clue& clue) {
  return {Outcome::kStatus255, stop, Worded(finding, clue), {}, 255};
}

Verdict Aborts(Stop stop, Finding finding, const Clue& clue, const std::string& what) {
  return {Outcome::kAborts, stop, Worded(finding, clue), Line(launcher::LastWordsAfterException(what.c_str()))};
}

// What a child did that did not finish, as the verb of a sentence.
std::string Deed(const ChildResult& child) {
  switch (child.end) {
    case ChildEnd::kThrew:
    case ChildEnd::kThrewUnknown:
      return "throws an exception";
    case ChildEnd::kCrashed:
      return "crashes";
    case ChildEnd::kExited:
    case ChildEnd::kFinished:
    case ChildEnd::kTimedOut:
    case ChildEnd::kNotStarted:
      break;
  }
  return "ends the process";
}

// How a child ended that did not finish is how a launch would end.
Verdict EndsLike(const ChildResult& child, Stop stop, Warning cause) {
  Verdict verdict{Outcome::kNotKnown, stop, std::move(cause)};
  switch (child.end) {
    case ChildEnd::kThrew:
      verdict.outcome = Outcome::kAborts;
      verdict.message = Line(launcher::LastWordsAfterException(child.message.c_str()));
      break;
    case ChildEnd::kThrewUnknown:
      verdict.outcome = Outcome::kAborts;
      verdict.message = Line(launcher::kLastWordsAfterAnythingElse);
      break;
    case ChildEnd::kCrashed:
      verdict.outcome = Outcome::kDies;
      verdict.code = child.code;
      break;
    case ChildEnd::kExited:
      verdict.outcome = Outcome::kExits;
      verdict.code = child.code;
      break;
    case ChildEnd::kFinished:
    case ChildEnd::kTimedOut:
    case ChildEnd::kNotStarted:
      break;
  }
  return verdict;
}

Verdict EndsLike(const ChildResult& child, Stop stop, Finding ended, Finding notFinished, Clue clue) {
  clue.values.merge(LimitValues(child));
  clue.values.emplace("did", Deed(child));
  const std::string words = Printable(LastWords(child));
  clue.values.emplace("output", words.empty() ? words : "It wrote: " + words);
  return EndsLike(child, stop, Worded(child.end == ChildEnd::kTimedOut ? notFinished : ended, clue));
}

// A mode without the right is mended; of what else closes a file the reader knows more.
std::string CureOfClosed(const std::string& path) {
  std::error_code ignored;
  const auto any = fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec;
  const bool isClosed = (fs::status(path, ignored).permissions() & any) != any;
  return isClosed ? CommandToPermit(path, "rx")
                  : "mount its file system with exec, and let this user enter each folder above it";
}

Clue AtSettings(const SettingsReport& settings, Values values = {}) {
  Clue clue = AtPath(settings.path, std::move(values));
  clue.values.emplace("file_word", ShellWord(settings.path));
  clue.values.emplace("new_word", ShellWord(settings.path + ".new"));
  return clue;
}

// Rights can be given; what else keeps a file from being read, such as a broken disk, is told by the kernel.
std::string CommandToRead(const std::string& file) {
  return MayUse(file, R_OK) ? "write the file again, and see what the kernel says of its disk (dmesg)"
                            : CommandToPermit(file, "r");
}

Verdict CannotOpen(const SettingsReport& settings) {
  std::error_code ignored;
  const bool isThere = fs::exists(settings.path, ignored) || ignored;
  return Aborts(Stop::kSettings, isThere ? Finding::kSettingsUnreadable : Finding::kSettingsMissing,
                AtSettings(settings, {{"reason", settings.reason}, {"command", CommandToRead(settings.path)}}),
                settings.failure);
}

std::optional<Verdict> JudgeSettings(const SettingsReport& settings) {
  switch (settings.end) {
    case SettingsEnd::kUnreadable:
      return CannotOpen(settings);
    case SettingsEnd::kNeverEnds:
      return Verdict{Outcome::kHangs, Stop::kSettings, Worded(Finding::kSettingsNeverEnd, AtSettings(settings))};
    case SettingsEnd::kMalformed:
      return Aborts(Stop::kText, Finding::kSettingsNotUtf8,
                    AtSettings(settings, {{"line", std::to_string(settings.entries.back().line)}}), settings.failure);
    case SettingsEnd::kNoRoot:
      return Refuses(Stop::kNoRoot, Finding::kNoRoot, AtSettings(settings));
    case SettingsEnd::kNoProductFolder:
      return Aborts(Stop::kProduct, Finding::kExecutableFolderUnknown, {"/proc/self/exe"}, settings.folder_failure);
    case SettingsEnd::kComplete:
      break;
  }
  return std::nullopt;
}

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

Clue AtVersion(const VersionReport& version) {
  const std::string library = ToUtf8(version.library);
  return AtPath(library, {{"library", Printable(library)},
                          {"folder_word", ShellWord(fs::path(library).parent_path().string())},
                          {"version", Printable(version.name)},
                          {"detail", Printable(Detail(version))}});
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

// A runtime that reports a failure has its launch end with status 0, as the launcher drops what running gives.
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

// Without a launcher that begins nothing else matters. A shell has a status of its own for each of these.
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
