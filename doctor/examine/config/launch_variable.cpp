#include "doctor/examine/config/launch_variable.h"

#include <cstdlib>

#include "foundation/utf.h"
#include "launcher/product/product.h"
#include "netloader/platform/environment.h"

namespace doctor {

std::optional<std::string> LaunchVariable(const std::string& name) {
  const auto text = [](const char* value) {
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
  };
  std::optional<std::string> value = text(std::getenv(name.c_str()));
  netloader::platform_utils::ForEachRuntimeVariable(
      launcher::RuntimeEnvironment(),
      [&](const auto& fixed) { value = fixed.name == name ? text(fixed.value) : value; },
      [&](const auto& own, const auto& set) {
        value = tov::text::ToUtf8(own) == name ? tov::text::ToUtf8(set) : value;
      });
  return value;
}

}  // namespace doctor
