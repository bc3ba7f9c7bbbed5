#include "doctor/examine/environment_report.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "foundation/strings.h"
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

constexpr auto kObeyedPrefixes =
    std::to_array<std::string_view>({"DOTNET_", "COMPlus_", "CORECLR_", "COREHOST_", "LD_"});

bool IsObeyed(std::string_view name) {
  return std::ranges::any_of(kObeyedPrefixes, [&](std::string_view prefix) { return name.starts_with(prefix); });
}

// All that are set now, but for those that the launch itself sets or removes.
std::vector<ObeyedVariable> Obeyed(const std::vector<VariableReport>& changed) {
  std::vector<ObeyedVariable> obeyed;
  for (char** entry = ::environ; entry != nullptr && *entry != nullptr; ++entry) {
    const std::string_view text = *entry;
    const std::string name(text.substr(0, text.find('=')));
    if (IsObeyed(name) && std::ranges::find(changed, name, &VariableReport::name) == changed.end()) {
      obeyed.push_back({name, ValueOf(name).value_or("")});
    }
  }
  std::ranges::sort(obeyed, {}, &ObeyedVariable::name);
  return obeyed;
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
  report.obeyed = Obeyed(report.variables);
  report.log_folder = ToUtf8(settings.taken_log_folder);
  return report;
}

}  // namespace doctor
