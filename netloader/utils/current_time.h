// The time stamp of log lines.
#pragma once

#include <string>

namespace netloader::utils {

/// The local time as "2024-03-01 13:05:09". When the time cannot be had: a `std::runtime_error` with `throwOnError`,
/// else an empty string.
std::string GetCurrentTimeString(bool throwOnError);

}  // namespace netloader::utils
