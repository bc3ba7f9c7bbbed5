#include "doctor/report/text_report.h"

#include <algorithm>

#include "doctor/judge/shown_line.h"
#include "doctor/judge/words/file_detail.h"
#include "doctor/judge/words/message.h"
#include "doctor/judge/words/names.h"
#include "doctor/judge/words/status_names.h"
#include "doctor/judge/words/text.h"
#include "doctor/judge/words/variable_words.h"
#include "doctor/judge/words/version_reasons.h"
#include "doctor/report/opening.h"
#include "doctor/report/page.h"
#include "doctor/report/summary.h"
#include "foundation/result_code.h"

namespace doctor {
namespace {

using Rows = std::vector<std::vector<Cell>>;
using netloader::FxrFolderState;

constexpr std::size_t kIndent = 2;
// Of longer lists the beginning is shown; the JSON holds all of it.
constexpr std::size_t kLongestList = 40;
constexpr std::size_t kLongestValue = 200;

std::string Shortened(std::string_view bytes) {
  return bytes.size() <= kLongestValue ? Quoted(bytes)
                                       : Quoted(bytes.substr(0, kLongestValue)) + " and " +
                                             std::to_string(bytes.size() - kLongestValue) + " bytes more";
}

// What a value is called in a table, and its colour.
template <typename Value>
struct Shown {
  Value value;
  std::string_view code;
  Paint paint;
};

constexpr auto kShownUses = std::to_array<Shown<LineUse>>({
    {LineUse::kUsed, "used", Paint::kGood},
    {LineUse::kUnused, "not used", Paint::kFaint},
    {LineUse::kReplaced, "replaced by line {line}", Paint::kOdd},
    {LineUse::kSkipped, "skipped: it sets nothing", Paint::kFaint},
    {LineUse::kMalformed, "not UTF-8: a launch aborts here", Paint::kBad},
});
static_assert(IsComplete(kShownUses, LineUse::kMalformed));

Cell UseCell(const SettingsEntry& entry) {
  const auto& [use, words, paint] = RowOf(kShownUses, entry.use);
  return {Filled(words, {{"line", std::to_string(entry.replaced_by)}}), paint};
}

// The lines that matter are always shown, the others as far as there is room.
bool Matters(const SettingsEntry& entry) {
  return entry.use == LineUse::kUsed || entry.use == LineUse::kMalformed;
}

std::string OrHidden(const std::optional<std::string>& bytes) {
  return bytes ? Shortened(*bytes) : std::string(kHidden);
}

std::string LineWords(const SettingsEntry& entry) {
  const ShownLine shown = ShownOf(entry);
  return entry.use == LineUse::kSkipped ? OrHidden(shown.value) : OrHidden(shown.key) + " = " + OrHidden(shown.value);
}

void PutSettings(Page& page, const SettingsReport& settings) {
  page.Heading("1. Settings", Printable(settings.path));
  if (!settings.IsReadable()) {
    page.Paragraph(settings.end == SettingsEnd::kNeverEnds ? "is a pipe" : "cannot be read: " + settings.reason,
                   kIndent, Paint::kBad);
    return;
  }
  Rows rows;
  std::size_t leftOut = 0;
  for (const SettingsEntry& entry : settings.entries) {
    if (rows.size() >= kLongestList && !Matters(entry)) {
      ++leftOut;
      continue;
    }
    rows.push_back({{"line " + std::to_string(entry.line)}, UseCell(entry), {LineWords(entry)}});
  }
  page.Table(rows, kIndent);
  if (leftOut > 0) {
    page.Paragraph("and " + std::to_string(leftOut) + " lines more that are not used", kIndent, Paint::kFaint);
  }
  if (settings.entries.empty()) {
    page.Paragraph("holds no line", kIndent, Paint::kOdd);
  }
}

constexpr auto kShownStandings = std::to_array<Shown<Standing>>({
    {Standing::kChosen, "chosen", Paint::kGood},
    {Standing::kNotLoaded, "sound, not loaded", Paint::kPlain},
    {Standing::kRefused, "refused", Paint::kOdd},
    {Standing::kFatal, "fatal", Paint::kBad},
    {Standing::kNotKnown, "not known", Paint::kBad},
});
static_assert(IsComplete(kShownStandings, Standing::kNotKnown));

Cell StandingCell(const VersionReport& version) {
  if (version.standing == Standing::kRefused && !version.is_candidate) {
    return {"refused", Paint::kFaint};
  }
  const auto& [standing, words, paint] = RowOf(kShownStandings, version.standing);
  return {std::string(words), paint};
}

std::string FolderWords(const netloader::Discovery& discovery) {
  if (discovery.state == FxrFolderState::kWalked && discovery.findings.empty()) {
    return "holds no version";
  }
  return Filled(RowOf(kFolderStates, discovery.state).sentence,
                {{"result", std::string(tov::ResultCodeMessage(discovery.result))}});
}

void PutRuntime(Page& page, const std::optional<RuntimeReport>& runtime) {
  if (!runtime) {
    page.Heading("2. Runtime", "");
    page.Paragraph("not looked for: no runtime root is known", kIndent, Paint::kFaint);
    return;
  }
  page.Heading("2. Runtime", Printable(ToUtf8(runtime->discovery.fxr_folder)));
  if (const std::string words = FolderWords(runtime->discovery); !words.empty()) {
    page.Paragraph(words, kIndent, Paint::kBad);
  }
  Rows rows;
  for (const VersionReport& version : runtime->versions) {
    if (rows.size() < kLongestList) {
      rows.push_back({{version.name.empty() ? "(not UTF-8)" : Printable(version.name)},
                      StandingCell(version),
                      {Printable(Detail(version))}});
    }
  }
  page.Table(rows, kIndent);
  if (runtime->versions.size() > rows.size()) {
    page.Paragraph("and " + std::to_string(runtime->versions.size() - rows.size()) + " folders more", kIndent,
                   Paint::kFaint);
  }
}

// What a place has, in words.
struct RootWords {
  RootState value;
  std::string_view code;
  Paint paint;
};

constexpr auto kRootWords = std::to_array<RootWords>({
    {RootState::kNothing, "no host", Paint::kFaint},
    {RootState::kNoVersion, "no version that fits", Paint::kFaint},
    {RootState::kRefused, "{version}, refused", Paint::kOdd},
    {RootState::kNotLoaded, "{version}, not loaded", Paint::kPlain},
    {RootState::kServes, "{version}, would do", Paint::kGood},
});
static_assert(IsComplete(kRootWords, RootState::kServes));

std::vector<Cell> RowOfRoot(const OtherRoot& root) {
  const auto& [state, words, paint] = RowOf(kRootWords, root.state);
  const std::string found = Filled(words, {{"version", Printable(root.version)}});
  const std::string& by = root.place.named_by;
  return {{Printable(root.place.folder)},
          {found + (root.has_framework ? ", with frameworks" : ""), paint},
          {by.empty() ? "" : "named by " + Printable(by), Paint::kFaint}};
}

bool IsEmpty(const OtherRoot& root) {
  return root.state == RootState::kNothing && !root.has_framework;
}

void PutOtherRoots(Page& page, const std::vector<OtherRoot>& roots) {
  if (std::ranges::all_of(roots, [](const OtherRoot& root) { return root.place.is_meant; })) {
    return;
  }
  page.Heading("Other places of .NET", "");
  Rows rows;
  std::string empty;
  for (const OtherRoot& root : roots) {
    if (root.place.is_meant) {
      continue;  // The opening says what is wrong with it.
    }
    if (IsEmpty(root)) {
      empty.append(empty.empty() ? "" : ", ").append(Printable(root.place.folder));
    } else {
      rows.push_back(RowOfRoot(root));
    }
  }
  page.Table(rows, kIndent);
  if (!empty.empty()) {
    page.Paragraph("nothing in " + empty, kIndent, Paint::kFaint);
  }
}

void PutEnvironment(Page& page, const EnvironmentReport& environment) {
  page.Heading("3. Environment", "");
  Rows rows;
  for (const VariableReport& variable : environment.variables) {
    rows.push_back({{variable.name},
                    {variable.value ? "set to " + *variable.value : "removed"},
                    {variable.now ? "now " + Shortened(*variable.now) : "now not set",
                     variable.now ? Paint::kPlain : Paint::kFaint}});
  }
  page.Table(rows, kIndent);
  if (environment.obeyed.empty()) {
    return;
  }
  page.Paragraph("set by others, and obeyed:", kIndent);
  Rows obeyed;
  for (const ObeyedVariable& variable : environment.obeyed) {
    obeyed.push_back({{Printable(variable.name)},
                      {IsKnownVariable(variable.name) ? Shortened(variable.value) : "(not shown)"},
                      {std::string(VariableWords(variable.name))}});
  }
  page.Table(obeyed, kIndent);
}

Cell FileCell(const FileReport& file, bool isNeeded) {
  const std::string words = Detail(file);
  const std::string detail = words.empty() || file.state == FileState::kMissing ? std::string() : ": " + words;
  const Paint paint = file.state == FileState::kPresent ? Paint::kGood : isNeeded ? Paint::kBad : Paint::kOdd;
  return {std::string(RowOf(kFileStates, file.state).code) + detail, paint};
}

Cell FrameworkCell(const FrameworkReport& framework) {
  if (!framework.is_there) {
    return {"needed; not looked for, as no runtime root is known", Paint::kFaint};
  }
  return *framework.is_there ? Cell{"needed; " + Printable(framework.taken) + " is taken", Paint::kGood}
                             : Cell{"needed, and not there", Paint::kBad};
}

std::string ContextWords(const ContextProbe& context) {
  if (context.child.end != ChildEnd::kFinished) {
    return context.child.end == ChildEnd::kTimedOut ? "was not created in time" : "was not created";
  }
  return (context.IsUsable() ? "created and closed: " : "refused: ") + Hex(context.result) + " " +
         std::string(HostStatusName(context.result));
}

void PutWords(Page& page, const std::string& whose, std::string words) {
  if (words.empty()) {
    return;
  }
  page.Paragraph(whose, kIndent);
  for (std::size_t end = 0; !words.empty(); words.erase(0, end + 1)) {
    end = std::min(words.find('\n'), words.size());
    page.Paragraph(Printable(words.substr(0, end)), 2 * kIndent);
  }
}

void PutHostWords(Page& page, const ContextProbe& context) {
  if (!context.IsUsable()) {
    PutWords(page, "The host says:", context.host_text.empty() ? context.child.output : context.host_text);
  }
}

void PutApplication(Page& page, const ApplicationReport& application) {
  page.Heading("4. Application", Printable(application.assembly_file.path));
  Rows rows = {{{"assembly"}, FileCell(application.assembly_file, true)},
               {{"runtimeconfig.json"}, FileCell(application.runtime_config, true)},
               {{"deps.json"}, FileCell(application.dependencies, false)}};
  for (const FrameworkReport& framework : application.frameworks) {
    rows.push_back({{Printable(framework.name) + " " + Printable(framework.version)}, FrameworkCell(framework)});
  }
  if (application.context) {
    rows.push_back(
        {{"context"},
         {ContextWords(*application.context), application.context->IsUsable() ? Paint::kGood : Paint::kBad}});
  }
  page.Table(rows, kIndent);
  if (application.context) {
    PutHostWords(page, *application.context);
  }
}

std::string StartWords(const StartProbe& probe) {
  if (probe.child.end != ChildEnd::kFinished) {
    return probe.child.end == ChildEnd::kTimedOut ? "did not start in time" : "ended the process";
  }
  return probe.HasStarted() ? "starts" : probe.was_tried ? "does not start: " + Hex(probe.result) : "was not tried";
}

void PutStart(Page& page, const std::optional<StartReport>& start) {
  page.Heading("5. Runtime start", "");
  if (!start) {
    page.Paragraph("not tried: there is nothing to start it for", kIndent, Paint::kFaint);
    return;
  }
  const Paint paint = start->probe.HasStarted() ? Paint::kGood : start->probe.was_tried ? Paint::kBad : Paint::kOdd;
  Rows rows = {{{"runtime"}, {StartWords(start->probe), paint}}};
  for (const BrokenFile& file : start->broken) {
    if (rows.size() < kLongestList) {
      rows.push_back(
          {{Printable(file.path)}, {Printable(file.detail), file.need == Need::kLater ? Paint::kOdd : Paint::kBad}});
    }
  }
  page.Table(rows, kIndent);
  if (!start->probe.HasStarted()) {
    PutWords(page, "It says:", start->probe.child.output + start->probe.host_text);
  }
}

void PutDetails(Page& page, const Diagnosis& diagnosis, Station station) {
  switch (station) {
    case Station::kSettings:
      return PutSettings(page, diagnosis.settings);
    case Station::kRuntime:
      return PutRuntime(page, diagnosis.runtime);
    case Station::kEnvironment:
      return PutEnvironment(page, diagnosis.environment);
    case Station::kApplication:
      return PutApplication(page, diagnosis.application);
    case Station::kStart:
      return PutStart(page, diagnosis.start);
  }
}

}  // namespace

std::string TextReport(const Diagnosis& diagnosis, const TextStyle& style, const Head& head) {
  Page page(style.colored, style.width);
  const std::vector<StationSummary> summary = Summary(diagnosis);
  PutOpening(page, diagnosis, summary, head);
  PutWarnings(page, diagnosis);
  if (style.verbose) {
    PutHead(page, head);
  }
  for (const StationSummary& station : summary) {
    if (style.verbose || station.mark == Mark::kNo) {
      PutDetails(page, diagnosis, station.station);
    }
  }
  PutOtherRoots(page, diagnosis.other_roots);
  return page.Text();
}

}  // namespace doctor
