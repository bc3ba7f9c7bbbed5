// A child's time limit in words.
#pragma once

#include <chrono>
#include <string>

#include "doctor/child/child.h"
#include "doctor/judge/words/message.h"

namespace doctor {

/// The time in seconds, with the decimals that it has: "10", "0.25".
std::string Seconds(std::chrono::milliseconds time);

/// What a message says of a child that did not finish in time: `{limit}` is what it was given, `{longer}` what to try
/// next, in seconds.
Values LimitValues(const ChildResult& child);

}  // namespace doctor
