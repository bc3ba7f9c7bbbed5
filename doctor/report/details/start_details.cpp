#include "doctor/report/details/start_details.h"

#include "doctor/child/child.h"
#include "doctor/examine/broken_file.h"
#include "doctor/examine/start_probe.h"
#include "doctor/judge/words/status_names.h"
#include "doctor/judge/words/text.h"
#include "doctor/report/details/details.h"

namespace doctor {
namespace {

std::string StartWords(const StartProbe& probe) {
  if (probe.child.end != ChildEnd::kFinished) {
    return probe.child.end == ChildEnd::kTimedOut ? "did not start in time" : "ended the process";
  }
  return probe.HasStarted() ? "starts" : probe.was_tried ? "does not start: " + Hex(probe.result) : "was not tried";
}

}  // namespace

void PutStart(Page& page, const std::optional<StartReport>& start) {
  page.Heading("5. Runtime start", "");
  if (!start) {
    page.Paragraph("not tried: there is nothing to start it for", kIndent, Paint::kFaint);
    return;
  }
  const Paint paint = start->probe.HasStarted() ? Paint::kGood : start->probe.HasFailed() ? Paint::kBad : Paint::kOdd;
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

}  // namespace doctor
