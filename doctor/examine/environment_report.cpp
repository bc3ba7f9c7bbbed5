#include "doctor/examine/environment_report.h"

#include <cstdlib>
#include <utility>

#include "foundation/utf.h"
#include "launcher/product/product.h"
#include "netloader/platform/environment.h"

namespace doctor {
namespace {

using tov::text::ToUtf8;

std::optional<std::string> ValueOf(const std::string& name) {
  const char* value = std::getenv(name.c_str());
  return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

}  // namespace

EnvironmentReport ExamineEnvironment(const SettingsReport& settings) {
  EnvironmentReport report;
  const auto add = [&](const std::string& name, std::optional<std::string> value) {
    report.variables.push_back({name, std::move(value), ValueOf(name)});
  };
  netloader::platform_utils::ForEachRuntimeVariable(
      launcher::RuntimeEnvironment(),
      [&](const auto& fixed) { add(fixed.name, fixed.value ? std::optional<std::string>(fixed.value) : std::nullopt); },
      [&](const auto& name, const auto& value) { add(ToUtf8(name), ToUtf8(value)); });
  report.log_folder = ToUtf8(settings.taken_log_folder);
  return report;
}

}  // namespace doctor
