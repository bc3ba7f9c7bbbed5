#include <cstdlib>
#include <string_view>

#include "doctor/judge/near_misses.h"

namespace doctor {

namespace {

bool IsSetButEmpty(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && *value == '\0';
}

}  // namespace

Warnings EnvironmentNearMisses(const SettingsReport& settings) {
  if (settings.log_folder.empty() && IsSetButEmpty("TMP")) {
    return {{"tmp-empty", "TMP", "TMP is set but empty: it makes the log folder empty, and TEMP is not looked at",
             "unset TMP, or give it a folder"}};
  }
  return {};
}

}  // namespace doctor
