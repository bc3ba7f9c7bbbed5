// The settings file in a text report.
#pragma once

#include "doctor/examine/settings_report.h"
#include "doctor/report/page.h"

namespace doctor {

/// Its lines with what a launch makes of each.
void PutSettings(Page& page, const SettingsReport& settings);

}  // namespace doctor
