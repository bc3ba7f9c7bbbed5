#include "doctor/report/summary.h"

#include <array>
#include <filesystem>

#include "doctor/examine/application_report.h"
#include "doctor/examine/config/json_file.h"
#include "doctor/examine/frameworks.h"
#include "doctor/examine/runtime_report.h"
#include "doctor/examine/settings_report.h"
#include "doctor/judge/findings.h"
#include "doctor/judge/verdict.h"
#include "doctor/judge/warning.h"
#include "doctor/judge/words/named.h"
#include "doctor/judge/words/text.h"
#include "doctor/report/short_list.h"
#include "foundation/strings.h"
#include "foundation/utf.h"

namespace doctor {
namespace {

std::string SettingsWords(const Diagnosis& diagnosis) {
  const std::string root = ToUtf8(diagnosis.settings.root);
  if (diagnosis.runtime && diagnosis.runtime->root != diagnosis.settings.root) {
    return "asked about " + Printable(ToUtf8(diagnosis.runtime->root)) + " in their place";
  }
  return root.empty() ? "they do not name a runtime root" : Printable(root) + " is the runtime root";
}

void AddInBrackets(std::string& words, std::string_view what, const std::string& list) {
  if (!list.empty()) {
    words.append(" (").append(what).append(list).append(")");
  }
}

std::string RuntimeWords(const Diagnosis& diagnosis) {
  const VersionReport* decisive = diagnosis.runtime ? diagnosis.runtime->Decisive() : nullptr;
  if (decisive == nullptr) {
    return {};
  }
  ShortList refused;
  ShortList others;
  for (const VersionReport& version : diagnosis.runtime->versions) {
    if (version.is_candidate && &version != decisive) {
      (version.standing == Standing::kRefused ? refused : others).Add(Printable(version.name));
    }
  }
  std::string words = Printable(decisive->name);
  AddInBrackets(words, "passed over: ", refused.Text());
  AddInBrackets(words, "also there: ", others.Text());
  return words;
}

std::string EnvironmentWords(const Diagnosis&) {
  return "nothing in the way";
}

std::string ApplicationWords(const Diagnosis& diagnosis) {
  const ApplicationReport& application = diagnosis.application;
  std::string words = Printable(std::filesystem::path(application.assembly_file.path).filename().string());
  for (const FrameworkReport& framework : application.frameworks) {
    words += ", " + Printable(framework.name) + " " +
             Printable(framework.taken.empty() ? framework.version : framework.taken);
  }
  return words + (application.context ? "" : " (the host was not asked)");
}

std::string StartWords(const Diagnosis&) {
  return "the runtime starts";
}

// A part of the road: its name, and what to say of it when it is well.
struct StationText {
  Station value;
  std::string_view code;
  std::string (*words)(const Diagnosis& diagnosis);
};

constexpr auto kStations = std::to_array<StationText>({
    {Station::kSettings, "settings", SettingsWords},
    {Station::kRuntime, "runtime", RuntimeWords},
    {Station::kEnvironment, "environment", EnvironmentWords},
    {Station::kApplication, "application", ApplicationWords},
    {Station::kStart, "start", StartWords},
});
static_assert(IsComplete(kStations, Station::kStart));

Station StationOf(const Warning& warning) {
  return RowOf(kFindings, warning.finding).station;
}

// Where the launch ends; the part behind the last one when it does not.
int EndOf(const Verdict& verdict) {
  return verdict.outcome != Outcome::kRuns ? static_cast<int>(StationOf(verdict.cause))
         : verdict.tried == Tried::kStart  ? static_cast<int>(Station::kStart) + 1
                                           : static_cast<int>(Station::kStart);
}

// What was noticed at one part.
struct Noticed {
  std::string codes = {};
  ShortList places = {};  // Of what decides.

  void Add(const Warning& warning, bool decides) {
    const std::string code = std::string("[").append(RowOf(kFindings, warning.finding).code).append("]");
    if (codes.find(code) == std::string::npos) {
      codes.append(codes.empty() ? "" : " ").append(code);
    }
    places.Add(decides ? warning.place : "");
  }
};

// The cause comes first.
Noticed NoticedAt(const Diagnosis& diagnosis, Station station) {
  Noticed noticed;
  const Verdict& verdict = diagnosis.verdict;
  if (verdict.HasCause() && StationOf(verdict.cause) == station) {
    noticed.Add(verdict.cause, verdict.outcome != Outcome::kRuns);
  }
  for (const Warning& warning : diagnosis.warnings) {
    if (StationOf(warning) == station) {
      noticed.Add(warning, warning.decides);
    }
  }
  return noticed;
}

StationSummary Summarized(const StationText& text, const Diagnosis& diagnosis) {
  StationSummary summary{text.value, text.code, Mark::kOk, text.words(diagnosis), {}};
  const int end = EndOf(diagnosis.verdict);
  const int at = static_cast<int>(text.value);
  if (at > end || (at == end && diagnosis.verdict.outcome == Outcome::kRuns)) {
    summary.mark = Mark::kNotReached;
    summary.words = at > end ? "not reached" : "not tried";
  }
  const Noticed noticed = NoticedAt(diagnosis, text.value);
  summary.codes = noticed.codes;
  if (at == end && diagnosis.verdict.outcome != Outcome::kRuns) {
    summary.mark = Mark::kNo;
    summary.words = noticed.places.Text();
  }
  return summary;
}

}  // namespace

std::vector<StationSummary> Summary(const Diagnosis& diagnosis) {
  std::vector<StationSummary> summary;
  summary.reserve(kStations.size());
  for (const StationText& text : kStations) {
    summary.push_back(Summarized(text, diagnosis));
  }
  return summary;
}

}  // namespace doctor
