// What a report is of: which program was asked what, by whom, where and when.
#pragma once

#include <string>

#include "doctor/examine/machine/machine.h"
#include "doctor/judge/diagnosis.h"
#include "doctor/report/page.h"

namespace doctor {

/// What the other parts of a report do not depend on.
struct Head {
  Machine machine = {};
  Question asked = {};
};

/// "grellin_doctor 1.1.0 on app-01 as quor, 2026-11-21 16:30 +01:00, Debian 12, glibc 2.36", printable; what is not
/// known is left out.
std::string HeadLine(const Machine& machine);

/// All of it, in two parts of a report.
void PutHead(Page& page, const Head& head);

}  // namespace doctor
