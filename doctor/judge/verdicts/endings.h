// Verdicts by the way in which a launch ends.
#pragma once

#include <string>

#include "doctor/child/child.h"
#include "doctor/judge/findings.h"
#include "doctor/judge/near_misses/checks.h"
#include "doctor/judge/stop.h"
#include "doctor/judge/verdict.h"
#include "doctor/judge/warning.h"

namespace doctor {

/// The launcher ends with status 255.
Verdict Refuses(Stop stop, Finding finding, const Clue& clue);

/// The launcher writes the exception's text to standard error and aborts.
Verdict Aborts(Stop stop, Finding finding, const Clue& clue, const std::string& what);

/// A launch ends as the child did, which did not finish.
Verdict EndsLike(const ChildResult& child, Stop stop, Warning cause);

/// The same with the cause made of what is found: `ended`, or `notFinished` for a child that took too long.
Verdict EndsLike(const ChildResult& child, Stop stop, Finding ended, Finding notFinished, Clue clue);

}  // namespace doctor
