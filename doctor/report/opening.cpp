#include "doctor/report/opening.h"

#include <algorithm>
#include <array>

#include "doctor/examine/machine/machine.h"
#include "doctor/judge/findings.h"
#include "doctor/judge/verdict.h"
#include "doctor/judge/warning.h"
#include "doctor/judge/words/named.h"
#include "doctor/judge/words/text.h"

namespace doctor {
namespace {

std::string MeaningOf(const Verdict& verdict) {
  if (verdict.message.empty()) {
    return verdict.cause.meaning;
  }
  const std::string line = Quoted(verdict.message.substr(0, verdict.message.find('\n')));
  return verdict.cause.meaning + (verdict.cause.meaning.empty() ? "" : " ") + "It would write " + line + ".";
}

void PutVerdict(Page& page, const Verdict& verdict) {
  page.Paragraph(VerdictLine(verdict), 0, verdict.outcome == Outcome::kRuns ? Paint::kGood : Paint::kBad);
  if (const std::string meaning = MeaningOf(verdict); !meaning.empty()) {
    page.Paragraph(meaning, kIndent);
  }
  if (!verdict.cause.cure.empty()) {
    // What is not known may need no mending.
    const bool isKnown = verdict.outcome != Outcome::kNotKnown;
    page.Line((isKnown ? "To mend it:  " : "To wait longer:  ") + verdict.cause.cure, kIndent);
  }
}

constexpr auto kShownMarks = std::to_array<Shown<Mark>>({
    {Mark::kOk, "ok", Paint::kGood},
    {Mark::kNo, "no", Paint::kBad},
    {Mark::kNotReached, "--", Paint::kFaint},
});
static_assert(IsComplete(kShownMarks, Mark::kNotReached));

void PutSummary(Page& page, const std::vector<StationSummary>& summary) {
  Rows rows;
  for (const StationSummary& station : summary) {
    const Shown<Mark>& mark = RowOf(kShownMarks, station.mark);
    std::string words = station.words;
    words.append(words.empty() || station.codes.empty() ? "" : "  ").append(station.codes);
    rows.push_back({{std::string(mark.code), mark.paint}, {std::string(station.name)}, {words}});
  }
  page.Paragraph("", 0);
  page.Table(rows, kIndent);
}

void PutWarning(Page& page, const Warning& warning) {
  const bool namesPlace = warning.text.find(warning.place) != std::string::npos;
  std::string text = namesPlace ? std::string() : warning.place + ": ";
  text.append(warning.text).append(" [").append(RowOf(kFindings, warning.finding).code).append("]");
  page.Paragraph(text, kIndent, Paint::kOdd);
  if (!warning.meaning.empty()) {
    page.Paragraph(warning.meaning, 2 * kIndent);
  }
  page.Line("-> " + warning.cure, 2 * kIndent);
}

// Whether the other one says it already.
bool IsSaidBy(const Warning& warning, const Warning& other) {
  return warning.place == other.place &&
         (other.finding == Finding::kSeveralMistakes || other.finding == Finding::kOlderRuntime ||
          other.finding == Finding::kNamedFileBroken);
}

// All that the opening does not say.
std::vector<const Warning*> LeftOver(const Diagnosis& diagnosis) {
  const Warning& cause = diagnosis.verdict.cause;
  const Warning* whole = &cause;
  std::vector<const Warning*> left;
  for (const Warning& warning : diagnosis.warnings) {
    const bool isCause = warning.finding == cause.finding && warning.place == cause.place;
    const bool isPart = warning.finding != Finding::kSeveralMistakes && IsSaidBy(warning, *whole);
    whole = warning.finding == Finding::kSeveralMistakes ? &warning : whole;
    if (!isCause && !isPart) {
      left.push_back(&warning);
    }
  }
  return left;
}

// Root may use every file, so that what root finds well may fail for the user that launches.
void PutOthers(Page& page, const Diagnosis& diagnosis, const Machine& machine) {
  if (machine.user_id != 0 || diagnosis.verdict.outcome != Outcome::kRuns || diagnosis.closed_to_others.empty()) {
    return;
  }
  page.Paragraph("That is so for root; others were not tried, and not all of them may use " +
                     Printable(diagnosis.closed_to_others) + ".",
                 0, Paint::kOdd);
  page.Line("To ask as a user:  grellin_doctor --user NAME", kIndent);
}

}  // namespace

void PutOpening(Page& page, const Diagnosis& diagnosis, const std::vector<StationSummary>& summary, const Head& head) {
  PutVerdict(page, diagnosis.verdict);
  PutSummary(page, summary);
  page.Paragraph("", 0);
  page.Paragraph(HeadLine(head.machine), 0, Paint::kFaint);
  PutOthers(page, diagnosis, head.machine);
}

void PutWarnings(Page& page, const Diagnosis& diagnosis) {
  const std::vector<const Warning*> warnings = LeftOver(diagnosis);
  const std::size_t all = warnings.size() + diagnosis.warnings.left_out;
  if (warnings.empty()) {
    return;
  }
  page.Heading("Noticed as well", "");
  for (std::size_t at = 0; at < std::min(warnings.size(), kLongestList); ++at) {
    PutWarning(page, *warnings[at]);
  }
  if (all > kLongestList) {
    page.Paragraph("and " + std::to_string(all - kLongestList) + " more", kIndent, Paint::kFaint);
  }
}

}  // namespace doctor
