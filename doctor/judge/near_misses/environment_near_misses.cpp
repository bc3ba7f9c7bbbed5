#include <cstdlib>

#include "doctor/judge/near_misses/checks.h"
#include "doctor/judge/near_misses/near_misses.h"

namespace doctor {
namespace {

bool IsSetButEmpty(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && *value == '\0';
}

std::optional<Clue> TmpEmpty(const SettingsReport& settings) {
  return !settings.names_log_folder && IsSetButEmpty("TMP") ? std::optional(Clue{"TMP"}) : std::nullopt;
}

// What the environment is looked at for, beside the settings.
constexpr auto kEnvironmentChecks = std::to_array<Check<SettingsReport>>({
    {Finding::kTmpEmpty, TmpEmpty},
});

}  // namespace

Warnings EnvironmentNearMisses(const SettingsReport& settings) {
  return Noticed(kEnvironmentChecks, settings);
}

}  // namespace doctor
