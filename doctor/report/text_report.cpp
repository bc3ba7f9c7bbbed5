#include "doctor/report/text_report.h"

#include "doctor/judge/stop.h"
#include "doctor/report/details/application_details.h"
#include "doctor/report/details/environment_details.h"
#include "doctor/report/details/other_roots_details.h"
#include "doctor/report/details/runtime_details.h"
#include "doctor/report/details/settings_details.h"
#include "doctor/report/details/start_details.h"
#include "doctor/report/opening.h"
#include "doctor/report/summary.h"

namespace doctor {
namespace {

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
