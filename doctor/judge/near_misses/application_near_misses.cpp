#include <vector>

#include "doctor/judge/near_misses/checks.h"
#include "doctor/judge/near_misses/near_misses.h"
#include "doctor/judge/words/text.h"

namespace doctor {
namespace {

std::optional<Clue> MissingAssembly(const ApplicationReport& report) {
  return report.assembly_file.state == FileState::kMissing ? std::optional(AtPath(report.assembly_file.path))
                                                           : std::nullopt;
}

std::optional<Clue> MalformedConfiguration(const ApplicationReport& report) {
  return report.runtime_config.state == FileState::kMalformed ? std::optional(AtPath(report.runtime_config.path))
                                                              : std::nullopt;
}

// What the application as a whole is looked at for.
constexpr auto kApplicationChecks = std::to_array<Check<ApplicationReport>>({
    {Finding::kMissingAssembly, MissingAssembly},
    {Finding::kMalformedConfig, MalformedConfiguration},
});

struct Needed {
  const FrameworkReport& framework;
  const FileReport& config;
};

std::optional<Clue> MissingFramework(const Needed& needed) {
  if (needed.framework.is_there != false) {
    return std::nullopt;
  }
  return Clue{Printable(needed.config.path),
              {{"framework", Printable(needed.framework.name)}, {"version", Printable(needed.framework.version)}}};
}

// What each framework that it names is looked at for.
constexpr auto kFrameworkChecks = std::to_array<Check<Needed>>({
    {Finding::kMissingFramework, MissingFramework},
});

}  // namespace

Warnings ApplicationNearMisses(const ApplicationReport& report, bool hasVersion) {
  Warnings warnings;
  Apply(kApplicationChecks, report, warnings);
  for (const FrameworkReport& framework : hasVersion ? report.frameworks : std::vector<FrameworkReport>()) {
    Apply(kFrameworkChecks, Needed{framework, report.runtime_config}, warnings);
  }
  return warnings;
}

}  // namespace doctor
