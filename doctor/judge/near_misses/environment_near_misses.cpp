#include <sys/resource.h>

#include <cstdlib>

#include "doctor/examine/settings_report.h"
#include "doctor/judge/findings.h"
#include "doctor/judge/near_misses/checks.h"
#include "doctor/judge/near_misses/near_misses.h"
#include "doctor/judge/warning.h"

namespace doctor {
namespace {

bool IsSetButEmpty(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && *value == '\0';
}

std::optional<Clue> TmpEmpty(const SettingsReport& settings) {
  return !settings.names_log_folder && IsSetButEmpty("TMP") ? std::optional(Clue{"TMP"}) : std::nullopt;
}

// A launch needs a few at once, and fails in one step or another without them.
std::optional<Clue> TooFewFiles(const SettingsReport& /*settings*/) {
  constexpr rlim_t kNeeded = 8;
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= kNeeded) {
    return std::nullopt;
  }
  return Clue{"", {{"limit", std::to_string(limit.rlim_cur)}}};
}

// What the environment is looked at for, beside the settings.
constexpr auto kEnvironmentChecks = std::to_array<Check<SettingsReport>>({
    {Finding::kTooFewFiles, TooFewFiles},
    {Finding::kTmpEmpty, TmpEmpty},
});

}  // namespace

Warnings EnvironmentNearMisses(const SettingsReport& settings) {
  return Noticed(kEnvironmentChecks, settings);
}

}  // namespace doctor
