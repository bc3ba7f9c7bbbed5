// The documented names of the host's status codes, and what these and the results of the runtime mean.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace doctor {

/// The name of a status code of the .NET hosting interface; "unknown status" for one that is not documented.
std::string_view HostStatusName(std::int32_t status);

/// What a status of the host, or a result of the runtime, says, as a clause; empty for one that says nothing more.
std::string_view StatusWords(std::int32_t status);

/// "0x80008096".
std::string Hex(std::int32_t status);

}  // namespace doctor
