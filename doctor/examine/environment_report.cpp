#include "doctor/examine/environment_report.h"

#include <cstdlib>

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
  for (const auto& [name, value] : netloader::platform_utils::kStaticVariables) {
    report.variables.push_back(
        {name, value != nullptr ? std::optional<std::string>(value) : std::nullopt, ValueOf(name)});
  }
  for (const auto& [name, value] : launcher::RuntimeEnvironment()) {
    report.variables.push_back({ToUtf8(name), ToUtf8(value), ValueOf(ToUtf8(name))});
  }
  report.log_folder = ToUtf8(settings.taken_log_folder);
  return report;
}

}  // namespace doctor
