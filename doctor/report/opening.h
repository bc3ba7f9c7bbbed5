// The beginning of a report: all that a reader in a hurry needs.
#pragma once

#include <vector>

#include "doctor/judge/diagnosis.h"
#include "doctor/report/head.h"
#include "doctor/report/page.h"
#include "doctor/report/summary.h"

namespace doctor {

/// How the launch would end and why, what that means, what to do; one line for each part of the road; what the report
/// is of, and for whom it does not hold.
void PutOpening(Page& page, const Diagnosis& diagnosis, const std::vector<StationSummary>& summary, const Head& head);

/// What else was noticed; nothing when that is nothing. Mistakes of one line of the settings stand together.
void PutWarnings(Page& page, const Diagnosis& diagnosis);

}  // namespace doctor
