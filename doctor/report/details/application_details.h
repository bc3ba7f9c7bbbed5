// The application in a text report.
#pragma once

#include "doctor/examine/application_report.h"
#include "doctor/report/page.h"

namespace doctor {

/// Its files, the frameworks that it needs, and the context that the host makes of them.
void PutApplication(Page& page, const ApplicationReport& application);

}  // namespace doctor
