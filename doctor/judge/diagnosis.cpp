#include "doctor/judge/diagnosis.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <set>
#include <sstream>
#include <system_error>

#include "doctor/child/child.h"
#include "doctor/examine/config/json_file.h"
#include "doctor/examine/config/runtime_config.h"
#include "doctor/examine/machine/icu.h"
#include "doctor/examine/probe.h"
#include "doctor/examine/start_probe.h"
#include "doctor/judge/findings.h"
#include "doctor/judge/near_misses/access.h"
#include "doctor/judge/near_misses/meant_roots.h"
#include "doctor/judge/near_misses/near_misses.h"
#include "doctor/judge/near_misses/other_root_near_misses.h"
#include "doctor/judge/stop.h"
#include "doctor/judge/words/named.h"
#include "doctor/judge/words/text.h"
#include "foundation/strings.h"
#include "foundation/utf.h"
#include "launcher/product/product.h"
#include "netloader/netloaderhostfxr/src/assembly_path.h"

namespace doctor {
namespace {

LibraryProber LibraryProberFor(const Question& question) {
  if (!question.probe) {
    return {};
  }
  return [&question](const tov::WideString& path) { return ProbeLibrary(path, question.patience); };
}

ContextProbe ContextOf(const RuntimeReport& runtime, const Patience& patience) {
  ContextProbe probe = ProbeContext(runtime.Decisive()->library, runtime.root,
                                    netloader::AssemblyPath(launcher::kAssemblyFileName), patience);
  if (probe.child.end == ChildEnd::kNotStarted) {
    throw std::system_error(probe.child.code, std::generic_category(), "a process to create the context in");
  }
  return probe;
}

ContextProber ContextProberFor(const Diagnosis& diagnosis, const Question& question) {
  const VersionReport* decisive = diagnosis.runtime ? diagnosis.runtime->Decisive() : nullptr;
  if (decisive == nullptr || decisive->standing != Standing::kChosen) {
    return {};
  }
  return [&] { return ContextOf(*diagnosis.runtime, question.patience); };
}

StartProbe StartOf(const Diagnosis& diagnosis, const Patience& patience) {
  const RuntimeReport& runtime = *diagnosis.runtime;
  StartProbe probe = ProbeStart(runtime.Decisive()->library, runtime.root, diagnosis.application.assembly, patience);
  if (probe.child.end == ChildEnd::kNotStarted) {
    throw std::system_error(probe.child.code, std::generic_category(), "a process to start the runtime in");
  }
  return probe;
}

// A launch comes to the runtime's start with a usable context only.
std::optional<StartReport> StartReportOf(const Diagnosis& diagnosis, const Patience& patience) {
  const auto& context = diagnosis.application.context;
  if (!context || !context->IsUsable()) {
    return std::nullopt;
  }
  const std::string assembly = ToUtf8(diagnosis.application.assembly);
  StartReport start = ExamineStart(assembly, context->assemblies, [&] { return StartOf(diagnosis, patience); });
  if (const IcuSettings& icu = diagnosis.application.icu; start.probe.HasStarted() && !IsInvariant(icu)) {
    start.has_icu = HasIcu(icu, std::filesystem::path(assembly).parent_path().string(), patience);
  }
  return start;
}

void Append(Warnings& all, Warnings more) {
  std::move(more.begin(), more.end(), std::back_inserter(all));
  all.left_out += more.left_out;
}

// Where another root is asked about, the one in the settings cannot be why a launch ends.
Warnings AboutSettings(const Diagnosis& diagnosis, const Question& question) {
  Warnings warnings = SettingsNearMisses(diagnosis.settings);
  for (Warning& warning : warnings) {
    const bool isRead = Contains(RowOf(kFindings, warning.finding).explains, Stop::kSettings | Stop::kText);
    warning.may_decide = warning.may_decide && (isRead || !question.root);
  }
  return warnings;
}

Warnings NearMisses(const Diagnosis& diagnosis, const Question& question) {
  Warnings warnings = AboutSettings(diagnosis, question);
  if (diagnosis.runtime) {
    Append(warnings, RuntimeNearMisses(*diagnosis.runtime));
  }
  Append(warnings, EnvironmentNearMisses(diagnosis.settings));
  Append(warnings, OpenPathNearMisses(diagnosis.open_paths));
  const bool hasVersion = diagnosis.runtime && diagnosis.runtime->decisive;
  Append(warnings, ApplicationNearMisses(diagnosis.application, hasVersion));
  if (diagnosis.start) {
    Append(warnings, StartNearMisses(*diagnosis.start));
  }
  return warnings;
}

std::string FolderOf(const std::string& file) {
  return std::filesystem::path(file).parent_path().string();
}

// The settings, the library with all beside it, the application, and the frameworks where the host has named them.
TrustedPaths PathsOf(const Diagnosis& diagnosis) {
  const std::string application = FolderOf(diagnosis.application.assembly_file.path);
  TrustedPaths paths{{diagnosis.settings.path}, {application}, {diagnosis.settings.path, application}};
  if (diagnosis.runtime) {
    const VersionReport* decisive = diagnosis.runtime->Decisive();
    const std::string root = ToUtf8(diagnosis.runtime->root);
    paths.trees.push_back(root);
    paths.folders.push_back(decisive != nullptr ? FolderOf(ToUtf8(decisive->library)) : root);
  }
  const auto& context = diagnosis.application.context;
  std::istringstream assemblies(context ? context->assemblies : "");
  std::set<std::string> folders;
  for (std::string path; std::getline(assemblies, path, ':');) {
    folders.insert(FolderOf(path));
  }
  paths.folders.insert(paths.folders.end(), folders.begin(), folders.end());
  return paths;
}

std::string ClosedPath(const Diagnosis& diagnosis) {
  const VersionReport* decisive = diagnosis.runtime ? diagnosis.runtime->Decisive() : nullptr;
  for (const std::string& file : {diagnosis.settings.path, decisive != nullptr ? ToUtf8(decisive->library) : "",
                                  diagnosis.application.assembly_file.path, diagnosis.application.runtime_config.path,
                                  diagnosis.application.dependencies.path}) {
    if (std::string closed = ClosedToOthers(file); !closed.empty()) {
      return closed;
    }
  }
  return {};
}

// What the settings mean comes first: where that serves, they have a mistake, and nothing else is wrong.
std::vector<RootPlace> PlacesToLookAt(const Diagnosis& diagnosis, const Question& question) {
  const RuntimeReport* runtime = diagnosis.runtime ? &*diagnosis.runtime : nullptr;
  std::vector<RootPlace> places;
  for (const std::string& root : MeantRoots(diagnosis.settings, runtime)) {
    places.push_back({root, diagnosis.settings.path, true});
  }
  std::ranges::move(RootPlaces(question.places), std::back_inserter(places));
  return places;
}

RootProber RootProberFor(const Question& question) {
  if (!question.probe) {
    return {};
  }
  return [&question](const RuntimeReport& runtime) {
    return ProbeLibrary(runtime.Decisive()->library, question.patience).IsGood() &&
           ContextOf(runtime, question.patience).IsUsable();
  };
}

void LookElsewhere(Diagnosis& diagnosis, const Question& question) {
  const RuntimeReport* runtime = diagnosis.runtime ? &*diagnosis.runtime : nullptr;
  if (!WantsOtherRoot(diagnosis.verdict, runtime)) {
    return;
  }
  diagnosis.other_roots = ExamineOtherRoots(PlacesToLookAt(diagnosis, question),
                                            runtime != nullptr ? ToUtf8(runtime->root) : "", RootProberFor(question));
  Warnings found =
      OtherRootNearMisses({diagnosis.settings, runtime, diagnosis.verdict, diagnosis.warnings, diagnosis.other_roots});
  Append(found, std::move(diagnosis.warnings));
  diagnosis.warnings = std::move(found);
}

}  // namespace

Diagnosis Diagnose(const Question& question) {
  Diagnosis diagnosis;
  const auto asked = question.root ? std::optional(ToUtf16(*question.root)) : std::nullopt;
  diagnosis.settings = ExamineSettings(question.settings_path, asked);
  const tov::WideString root = asked.value_or(diagnosis.settings.root);
  if (!root.empty()) {
    diagnosis.runtime = ExamineRuntime(root, LibraryProberFor(question));
  }
  diagnosis.environment = ExamineEnvironment(diagnosis.settings);
  if (!question.launcher.empty()) {
    diagnosis.launcher = ExamineLauncher(question.launcher, question.probe, question.patience);
  }
  diagnosis.application = ExamineApplication(root, ContextProberFor(diagnosis, question));
  diagnosis.start = StartReportOf(diagnosis, question.patience);
  diagnosis.verdict =
      Judge({&diagnosis.settings, diagnosis.runtime ? &*diagnosis.runtime : nullptr, &diagnosis.application,
             diagnosis.start ? &*diagnosis.start : nullptr, diagnosis.launcher ? &*diagnosis.launcher : nullptr});
  diagnosis.open_paths = PathsOpenToOthers(PathsOf(diagnosis));
  diagnosis.warnings = NearMisses(diagnosis, question);
  LookElsewhere(diagnosis, question);
  Explain(diagnosis.verdict, diagnosis.warnings);
  diagnosis.closed_to_others = ClosedPath(diagnosis);
  return diagnosis;
}

}  // namespace doctor
