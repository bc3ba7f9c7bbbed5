// The other places of .NET in a text report.
#pragma once

#include <vector>

#include "doctor/examine/other_roots.h"
#include "doctor/report/page.h"

namespace doctor {

/// What each of them has. Nothing where no other place was searched.
void PutOtherRoots(Page& page, const std::vector<OtherRoot>& roots);

}  // namespace doctor
