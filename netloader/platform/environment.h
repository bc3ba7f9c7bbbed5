// The process environment that the runtime will read, and errno.
#pragma once

#include <array>
#include <cstdint>
#include <map>

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

using Variables = std::map<tov::WideString, tov::WideString>;

/// Hands out all that is changed for the runtime, in the order in which it is applied: each of `kStaticVariables` to
/// `fixed`, then name and value of each of `variables` to `own`, so that these win. One without a name is left out.
template <typename Fixed, typename Own>
void ForEachRuntimeVariable(const Variables& variables, Fixed fixed, Own own) {
  for (const StaticVariable& variable : kStaticVariables) {
    fixed(variable);
  }
  for (const auto& [name, value] : variables) {
    if (!name.empty()) {
      own(name, value);
    }
  }
}

/// Applies them all. Throws what `SetEnvVariable` throws; what came before it stays applied.
void ApplyRuntimeEnvironment(const Variables& variables);

/// The calling thread's errno.
std::uint32_t GetErrorCode();

}  // namespace netloader::platform_utils
