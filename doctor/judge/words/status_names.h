// The documented names of the host's status codes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace doctor {

/// The name of a status code of the .NET hosting interface; "unknown status" for one that is not documented.
std::string_view HostStatusName(std::int32_t status);

/// "0x80008096".
std::string Hex(std::int32_t status);

}  // namespace doctor
