#include "doctor/judge/verdict.h"

#include <algorithm>
#include <optional>

#include "doctor/child/signal_name.h"
#include "doctor/judge/message.h"
#include "doctor/judge/status_names.h"
#include "doctor/judge/text.h"
#include "foundation/result_code.h"
#include "launcher/product/last_words.h"
#include "netloader/netloaderquorcommon/src/settings_keys.h"

namespace doctor {
namespace {

using netloader::FxrFolderState;

constexpr const char* kInstallRuntime =
    "Install the .NET 6.0 runtime for Linux x64 under the runtime root, or name another root in the settings.";

std::string Line(const launcher::LastWords& words) {
  return std::string(words.head) + words.what;
}

Verdict Refuses(std::string reason, std::string cure) {
  return {Outcome::kStatus255, std::move(reason), {}, 255, std::move(cure)};
}

Verdict Aborts(const std::string& what, std::string reason, std::string cure) {
  return {Outcome::kAborts, std::move(reason), Line(launcher::LastWordsAfterException(what.c_str())), 0,
          std::move(cure)};
}

// How a child ended that did not finish is how a launch would end. `doing` says at what.
Verdict EndsLike(const ChildResult& child, const std::string& doing, std::string cure) {
  switch (child.end) {
    case ChildEnd::kThrew:
      return Aborts(child.message, doing, std::move(cure));
    case ChildEnd::kThrewUnknown:
      return {Outcome::kAborts, doing, Line(launcher::kLastWordsAfterAnythingElse), 0, std::move(cure)};
    case ChildEnd::kCrashed:
      return {Outcome::kDies, doing, {}, child.code, std::move(cure)};
    case ChildEnd::kExited:
      return {Outcome::kExits, doing, {}, child.code, std::move(cure)};
    case ChildEnd::kFinished:
    case ChildEnd::kTimedOut:
    case ChildEnd::kNotStarted:
      break;
  }
  return {Outcome::kHangs, doing, {}, 0, std::move(cure)};
}

std::string RootLine() {
  return ToUtf8(NameOf(netloader::quor::detail::SettingsKey::kDotnetRootFolder)) + "=";
}

std::optional<Verdict> JudgeSettings(const SettingsReport& settings) {
  switch (settings.end) {
    case SettingsEnd::kUnreadable:
      return Aborts(settings.failure, "the settings file cannot be read: " + settings.reason,
                    "Make " + Printable(settings.path) + " readable for the user that launches; it must hold " +
                        RootLine() + " and the .NET root.");
    case SettingsEnd::kMalformed:
      return Aborts(settings.failure,
                    "line " + std::to_string(settings.entries.back().line) + " of the settings is not UTF-8",
                    "Write that line anew, in UTF-8.");
    case SettingsEnd::kNoRoot:
      return Refuses(
          "the settings name no runtime root",
          "Write " + RootLine() + "/usr/share/dotnet (or where .NET is) into " + Printable(settings.path) + ".");
    case SettingsEnd::kNoProductFolder:
      return Aborts(settings.folder_failure, "the folder of the executable cannot be told",
                    "Install the product in a folder whose name is UTF-8, with /proc mounted.");
    case SettingsEnd::kComplete:
      break;
  }
  return std::nullopt;
}

std::string FolderReason(const netloader::Discovery& discovery) {
  const std::string folder = Printable(ToUtf8(discovery.fxr_folder));
  switch (discovery.state) {
    case FxrFolderState::kWalked:
      break;
    case FxrFolderState::kNoStatus:
      return folder + ": " + std::string(tov::ResultCodeMessage(discovery.result));
    case FxrFolderState::kIsLink:
      return folder + " is a symbolic link";
    case FxrFolderState::kNotAFolder:
      return folder + " is no folder";
    case FxrFolderState::kUnreadable:
      return folder + " cannot be entered: " + std::string(tov::ResultCodeMessage(discovery.result));
  }
  return {};
}

std::string NothingFits(const RuntimeReport& runtime) {
  const auto candidates = std::ranges::count_if(runtime.versions, &VersionReport::is_candidate);
  if (candidates == 0) {
    return "no version of the runtime fits";
  }
  return candidates == 1 ? "the one version that fits cannot be loaded"
                         : "none of the " + std::to_string(candidates) + " versions that fit can be loaded";
}

std::optional<Verdict> JudgeRuntime(const RuntimeReport& runtime) {
  if (runtime.discovery.state != FxrFolderState::kWalked) {
    return Refuses(FolderReason(runtime.discovery), kInstallRuntime);
  }
  if (!runtime.failure.empty()) {
    return Aborts(runtime.failure, "the name of a version folder is no valid text", "Rename or remove that folder.");
  }
  const VersionReport* decisive = runtime.Decisive();
  if (decisive == nullptr) {
    return Refuses(NothingFits(runtime), kInstallRuntime);
  }
  if (decisive->standing == Standing::kFatal) {
    return EndsLike(decisive->child, "while loading " + Printable(ToUtf8(decisive->library)),
                    "Install that version of the runtime again, or remove its folder.");
  }
  return std::nullopt;
}

Verdict JudgeContext(const ContextProbe& context) {
  if (context.child.end != ChildEnd::kFinished) {
    return EndsLike(context.child, "while the host prepares the application", "Install the runtime again.");
  }
  if (context.IsUsable()) {
    return {Outcome::kRuns};
  }
  std::string what = Hex(context.result) + " (" + std::string(HostStatusName(context.result)) + ")";
  return Refuses(context.result == 0 ? "the host gives no context" : "the host refuses the application with " + what,
                 "See what the host says, below.");
}

}  // namespace

Verdict Judge(const Evidence& evidence) {
  if (auto verdict = JudgeSettings(*evidence.settings)) {
    return *verdict;
  }
  if (auto verdict = JudgeRuntime(*evidence.runtime)) {
    return *verdict;
  }
  if (evidence.application == nullptr || !evidence.application->context) {
    return {Outcome::kRuns, {}, {}, 0, {}, false};
  }
  return JudgeContext(*evidence.application->context);
}

std::string VerdictLine(const Verdict& verdict) {
  if (verdict.outcome == Outcome::kRuns && !verdict.is_probed) {
    return "A launch would run the application, as far as can be told without loading anything.";
  }
  return Filled(RowOf(kOutcomes, verdict.outcome).line,
                {{"reason", verdict.reason},
                 {"message", Quoted(verdict.message.substr(0, verdict.message.find('\n')))},
                 {"signal", SignalName(verdict.code)},
                 {"status", std::to_string(verdict.code)}});
}

}  // namespace doctor
