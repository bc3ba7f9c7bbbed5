#include "doctor/report/json_report.h"

#include <chrono>
#include <nlohmann/json.hpp>

#include "doctor/child/child.h"
#include "doctor/child/patience.h"
#include "doctor/child/signal_name.h"
#include "doctor/examine/application_report.h"
#include "doctor/examine/broken_file.h"
#include "doctor/examine/config/json_file.h"
#include "doctor/examine/environment_report.h"
#include "doctor/examine/frameworks.h"
#include "doctor/examine/machine/launcher_file.h"
#include "doctor/examine/machine/machine.h"
#include "doctor/examine/machine/open_paths.h"
#include "doctor/examine/other_roots.h"
#include "doctor/examine/probe.h"
#include "doctor/examine/runtime_report.h"
#include "doctor/examine/settings_report.h"
#include "doctor/examine/start_probe.h"
#include "doctor/examine/start_report.h"
#include "doctor/judge/findings.h"
#include "doctor/judge/shown_line.h"
#include "doctor/judge/verdict.h"
#include "doctor/judge/warning.h"
#include "doctor/judge/words/file_detail.h"
#include "doctor/judge/words/named.h"
#include "doctor/judge/words/names.h"
#include "doctor/judge/words/status_names.h"
#include "doctor/judge/words/text.h"
#include "doctor/judge/words/variable_words.h"
#include "doctor/judge/words/version_reasons.h"
#include "doctor/version.h"
#include "foundation/strings.h"
#include "foundation/utf.h"
#include "netloader/netloaderhostfxr/src/version_discovery.h"

namespace doctor {
namespace {

using json = nlohmann::ordered_json;

json OrNull(const std::optional<std::string>& text) {
  return text ? json(*text) : json();
}
json OrNull(const std::string& text) {
  return text.empty() ? json() : json(text);
}

json ToJson(const Verdict& verdict) {
  const bool hasStatus = verdict.outcome == Outcome::kRuns || verdict.outcome == Outcome::kStatus255 ||
                         verdict.outcome == Outcome::kExits || verdict.outcome == Outcome::kNotStarted ||
                         verdict.outcome == Outcome::kNotBegun;
  return {{"outcome", RowOf(kOutcomes, verdict.outcome).code},
          {"line", VerdictLine(verdict)},
          {"code", verdict.HasCause() ? json(RowOf(kFindings, verdict.cause.finding).code) : json()},
          {"reason", OrNull(verdict.cause.text)},
          {"meaning", OrNull(verdict.cause.meaning)},
          {"message", OrNull(verdict.message)},
          {"exit_status", hasStatus ? json(verdict.code) : json()},
          {"signal", verdict.outcome == Outcome::kDies ? json(SignalName(verdict.code)) : json()},
          {"cure", OrNull(verdict.cause.cure)},
          {"probed", verdict.tried != Tried::kFiles}};
}

json ToJson(const Warning& warning) {
  return {{"code", RowOf(kFindings, warning.finding).code},
          {"place", warning.place},
          {"text", warning.text},
          {"meaning", OrNull(warning.meaning)},
          {"cure", warning.cure},
          {"decides", warning.decides}};
}

json ToJson(const SettingsEntry& entry) {
  const ShownLine shown = ShownOf(entry);
  return {{"line", entry.line},
          {"key", OrNull(shown.key)},
          {"value", OrNull(shown.value)},
          {"hidden", !shown.key || !shown.value},
          {"use", RowOf(kLineUses, entry.use).code},
          {"replaced_by", entry.use == LineUse::kReplaced ? json(entry.replaced_by) : json()}};
}

json ToJson(const VersionReport& version) {
  return {{"version", version.name},
          {"library", ToUtf8(version.library)},
          {"candidate", version.is_candidate},
          {"standing", RowOf(kStandings, version.standing).code},
          {"reason", OrNull(std::string(ReasonCode(version)))},
          {"detail", OrNull(Detail(version))}};
}

json ToJson(const OtherRoot& root) {
  return {{"root", root.place.folder},
          {"named_by", OrNull(root.place.named_by)},
          {"state", RowOf(kRootStates, root.state).code},
          {"version", OrNull(root.version)},
          {"framework", root.has_framework}};
}

json ToJson(const VariableReport& variable) {
  return {{"name", variable.name},
          {"action", variable.value ? "set" : "remove"},
          {"value", OrNull(variable.value)},
          {"now", OrNull(variable.now)}};
}

json ToJson(const ObeyedVariable& variable) {
  return {{"name", variable.name},
          {"value", IsKnownVariable(variable.name) ? json(variable.value) : json()},
          {"does", VariableWords(variable.name)}};
}

json ToJson(const OpenPath& path) {
  return {{"path", path.path}, {"right", RowOf(kChangeRights, path.right).code}, {"who", OrNull(path.who)}};
}

json ToJson(const FileReport& file) {
  return {{"path", file.path}, {"state", RowOf(kFileStates, file.state).code}, {"detail", OrNull(Detail(file))}};
}

json ToJson(const FrameworkReport& framework) {
  return {{"name", framework.name},
          {"version", framework.version},
          {"there", framework.is_there ? json(*framework.is_there) : json()},
          {"roll_forward", RowOf(kRollForwards, framework.roll_forward).code},
          {"named_by", OrNull(framework.named_by)},
          {"found", framework.found},
          {"taken", OrNull(framework.taken)}};
}

json ToJson(const BrokenFile& file) {
  return {{"path", file.path}, {"detail", file.detail}, {"need", RowOf(kNeeds, file.need).code}};
}

json ToJson(const ProcessLimit& limit) {
  return {{"name", limit.name}, {"soft", limit.soft}, {"hard", limit.hard ? json(*limit.hard) : json()}};
}

template <typename Range>
json ToArray(const Range& range) {
  json array = json::array();
  for (const auto& each : range) {
    array.push_back(ToJson(each));
  }
  return array;
}

json ToJson(const Question& asked) {
  const std::chrono::duration<double> limit = asked.patience.limit;
  return {{"settings", asked.settings_path},
          {"root", OrNull(asked.root)},
          {"probe", asked.probe},
          {"time_limit", limit.count()}};
}

json ToJson(const Machine& machine) {
  return {
      {"host", OrNull(machine.host)},      {"time", OrNull(machine.time)},     {"user", OrNull(machine.user)},
      {"user_id", machine.user_id},        {"group_id", machine.group_id},     {"groups", machine.groups},
      {"system", OrNull(machine.system)},  {"kernel", OrNull(machine.kernel)}, {"c_library", OrNull(machine.c_library)},
      {"limits", ToArray(machine.limits)}, {"locale", OrNull(machine.locale)}};
}

json ToJson(const SettingsReport& settings) {
  return {{"path", settings.path},
          {"readable", settings.IsReadable()},
          {"reason", OrNull(settings.reason)},
          {"failure", OrNull(settings.failure)},
          {"runtime_root", OrNull(ToUtf8(settings.root))},
          {"log_folder", settings.names_log_folder ? json(ToUtf8(settings.log_folder)) : json()},
          {"entries", ToArray(settings.entries)}};
}

json ToJson(const RuntimeReport& runtime) {
  const VersionReport* decisive = runtime.Decisive();
  return {{"root", ToUtf8(runtime.root)},
          {"folder", ToUtf8(runtime.discovery.fxr_folder)},
          {"folder_state", RowOf(kFolderStates, runtime.discovery.state).code},
          {"failure", OrNull(runtime.failure)},
          {"decisive_version", decisive != nullptr ? json(decisive->name) : json()},
          {"versions", ToArray(runtime.versions)}};
}

json ToJson(const ContextProbe& context) {
  json object = {{"end", RowOf(kChildEnds, context.child.end).code},
                 {"output", OrNull(context.child.output)},
                 {"created", context.IsUsable()},
                 {"status", json()},
                 {"status_name", json()},
                 {"errno", json()},
                 {"host_text", OrNull(context.host_text)}};
  if (context.child.end == ChildEnd::kFinished) {
    object["status"] = Hex(context.result);
    object["status_name"] = HostStatusName(context.result);
    object["errno"] = context.error;
  }
  return object;
}

json ToJson(const LauncherReport& launcher) {
  return {{"path", launcher.path},
          {"there", launcher.is_there},
          {"executable", launcher.may_be_executed},
          {"lacks", OrNull(launcher.lacks)}};
}

json ToJson(const ApplicationReport& application) {
  return {{"assembly", ToJson(application.assembly_file)},
          {"runtime_config", ToJson(application.runtime_config)},
          {"dependencies", ToJson(application.dependencies)},
          {"frameworks", ToArray(application.frameworks)},
          {"context", application.context ? ToJson(*application.context) : json()}};
}

json ToJson(const StartReport& start) {
  return {{"end", RowOf(kChildEnds, start.probe.child.end).code},
          {"output", OrNull(start.probe.child.output)},
          {"tried", start.probe.was_tried || start.probe.child.end != ChildEnd::kFinished},
          {"started", start.probe.HasStarted()},
          {"result", start.probe.was_tried ? json(Hex(start.probe.result)) : json()},
          {"host_text", OrNull(start.probe.host_text)},
          {"broken_files", ToArray(start.broken)},
          {"icu", start.has_icu ? json(*start.has_icu) : json()}};
}

std::string HexOf(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string digits;
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    digits.append({kDigits[value >> 4], kDigits[value & 15]});
  }
  return digits;
}

// The texts below that are not UTF-8, each with its place and its bytes.
void AddInexact(const json& value, const json::json_pointer& place, json& list) {
  if (value.is_string() && !IsUtf8(value.get_ref<const std::string&>())) {
    list.push_back({{"place", place.to_string()}, {"bytes", HexOf(value.get_ref<const std::string&>())}});
  }
  if (value.is_structured()) {
    for (const auto& [name, member] : value.items()) {
      AddInexact(member, value.is_array() ? place / std::stoul(name) : place / name, list);
    }
  }
}

}  // namespace

std::string JsonReport(const Diagnosis& diagnosis, const Head& head) {
  json report = {{"schema", kJsonSchema},
                 {"doctor", {{"name", "grellin_doctor"}, {"version", kVersion}}},
                 {"asked", ToJson(head.asked)},
                 {"machine", ToJson(head.machine)},
                 {"verdict", ToJson(diagnosis.verdict)},
                 {"warnings", ToArray(diagnosis.warnings)},
                 {"settings", ToJson(diagnosis.settings)},
                 {"runtime", diagnosis.runtime ? ToJson(*diagnosis.runtime) : json()},
                 {"other_roots", ToArray(diagnosis.other_roots)},
                 {"environment",
                  {{"log_folder", diagnosis.environment.log_folder},
                   {"variables", ToArray(diagnosis.environment.variables)},
                   {"obeyed", ToArray(diagnosis.environment.obeyed)}}},
                 {"open_paths", ToArray(diagnosis.open_paths)},
                 {"launcher", diagnosis.launcher ? ToJson(*diagnosis.launcher) : json()},
                 {"application", ToJson(diagnosis.application)},
                 {"start", diagnosis.start ? ToJson(*diagnosis.start) : json()}};
  json inexact = json::array();
  AddInexact(report, json::json_pointer(), inexact);
  report["inexact"] = std::move(inexact);
  return report.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

}  // namespace doctor
