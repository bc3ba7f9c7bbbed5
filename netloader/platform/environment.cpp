#include "netloader/platform/environment.h"

#include <cerrno>
#include <cstdlib>
#include <string>

#include "foundation/cast.h"

namespace netloader::platform_utils {
namespace {

// A variable that cannot be set is no reason not to launch: the runtime works without, only less safely.
void Apply(const StaticVariable& variable) {
  if (variable.value != nullptr) {
    ::setenv(variable.name, variable.value, 1);
  } else {
    ::unsetenv(variable.name);
  }
}

}  // namespace

void ConfigureStaticEnvironmentsVariables() {
  ApplyRuntimeEnvironment({});
}

void SetEnvVariable(const tov::WideString& name, const tov::WideString& value) {
  const auto narrowValue = tov::text::Cast<std::string>(value);
  const auto narrowName = tov::text::Cast<std::string>(name);
  ::setenv(narrowName.c_str(), narrowValue.c_str(), 1);
}

void ApplyRuntimeEnvironment(const Variables& variables) {
  ForEachRuntimeVariable(variables, Apply, SetEnvVariable);
}

std::uint32_t GetErrorCode() {
  return static_cast<std::uint32_t>(errno);
}

}  // namespace netloader::platform_utils
