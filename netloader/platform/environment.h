// The process environment that the runtime will read, and errno.
#pragma once

#include <array>
#include <cstdint>

#include "foundation/strings.h"

namespace netloader::platform_utils {

/// A variable that is fixed for the runtime.
struct StaticVariable {
  const char* name;
  const char* value;  ///< What it is set to; null when it is removed.
};

/// In the order in which they are applied: no search of other install locations, no custom garbage collector, no code
/// injected at start-up.
inline constexpr auto kStaticVariables = std::to_array<StaticVariable>({
    {"DOTNET_MULTILEVEL_LOOKUP", "0"},
    {"COMPlus_GCName", nullptr},
    {"DOTNET_GCName", nullptr},
    {"DOTNET_STARTUP_HOOKS", nullptr},
});

/// Applies `kStaticVariables`. Failures are ignored.
void ConfigureStaticEnvironmentsVariables();

/// Sets a variable, replacing any value; name and value become UTF-8. Throws `std::bad_cast` for text that is not valid
/// UTF-16; a name that the system refuses is ignored.
void SetEnvVariable(const tov::WideString& name, const tov::WideString& value);

/// The calling thread's errno.
std::uint32_t GetErrorCode();

}  // namespace netloader::platform_utils
