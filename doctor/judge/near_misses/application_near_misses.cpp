#include <filesystem>

#include "doctor/judge/near_misses/broken_file_clue.h"
#include "doctor/judge/near_misses/checks.h"
#include "doctor/judge/near_misses/host_answer.h"
#include "doctor/judge/near_misses/near_misses.h"
#include "doctor/judge/words/text.h"

namespace doctor {
namespace {

std::optional<Clue> MissingAssembly(const ApplicationReport& report) {
  return report.assembly_file.state == FileState::kMissing ? std::optional(AtPath(report.assembly_file.path))
                                                           : std::nullopt;
}

std::optional<Clue> MissingConfiguration(const ApplicationReport& report) {
  if (report.runtime_config.state != FileState::kMissing || report.assembly_file.state == FileState::kMissing) {
    return std::nullopt;
  }
  return Explaining(report, {kHostLibraryMissing}, AtPath(report.runtime_config.path));
}

std::optional<Clue> NotJson(const ApplicationReport& report, const FileReport& file, const std::string& whose) {
  if (file.state != FileState::kMalformed) {
    return std::nullopt;
  }
  const std::string line = file.line > 0 ? ", line " + std::to_string(file.line) : "";
  return Explaining(report, {kInvalidConfig}, AtPath(file.path, {{"line", line}, {"whose", whose}}));
}

std::optional<Clue> MalformedConfiguration(const ApplicationReport& report) {
  return NotJson(report, report.runtime_config, "the product");
}

// A fault and what is said of the file that has it; `{detail}` is what the fault is about.
struct FaultWords {
  ConfigFault value;
  std::string_view code;
};

constexpr auto kFaultWords = std::to_array<FaultWords>({
    {ConfigFault::kNone, "is sound"},
    {ConfigFault::kNoOptions, "has no object runtimeOptions"},
    {ConfigFault::kNoName, "names a framework without its name"},
    {ConfigFault::kNoVersion, "names {detail} without a version"},
    {ConfigFault::kNamedTwice, "names {detail} twice"},
    {ConfigFault::kUnknownRollForward, "sets rollForward to {detail}, which has no meaning"},
    {ConfigFault::kUnknownVariable, "is overruled by DOTNET_ROLL_FORWARD={detail}, which has no meaning"},
    {ConfigFault::kMixedSettings, "sets rollForward beside rollForwardOnNoCandidateFx or applyPatches"},
    {ConfigFault::kNotText, "has a {detail} that is not a text"},
});
static_assert(IsComplete(kFaultWords, ConfigFault::kNotText));

std::optional<Clue> Invalid(const ApplicationReport& report, const std::string& path, ConfigFault fault,
                            const std::string& detail, const std::string& whose) {
  if (fault == ConfigFault::kNone || fault == ConfigFault::kUnknownVariable) {
    return std::nullopt;
  }
  const std::string words = Filled(RowOf(kFaultWords, fault).code, {{"detail", Printable(detail)}});
  return Explaining(report, {kInvalidConfig}, AtPath(path, {{"fault", words}, {"whose", whose}}));
}

std::optional<Clue> InvalidConfiguration(const ApplicationReport& report) {
  return Invalid(report, report.runtime_config.path, report.config_fault, report.config_detail, "the product");
}

std::optional<Clue> NoFrameworkNamed(const ApplicationReport& report) {
  const bool isSound = report.runtime_config.state == FileState::kPresent && report.config_fault == ConfigFault::kNone;
  if (!isSound || !report.frameworks.empty() || report.conflict) {
    return std::nullopt;
  }
  return Explaining(report, {kHostLibraryMissing}, AtPath(report.runtime_config.path));
}

std::optional<Clue> RollForwardVariable(const ApplicationReport& report) {
  return report.config_fault == ConfigFault::kUnknownVariable
             ? Explaining(report, {kInvalidConfig},
                          {"DOTNET_ROLL_FORWARD", {{"value", Printable(report.config_detail)}}})
             : std::nullopt;
}

// The version folder that the file lies in names what is to be installed again.
std::string RuntimeOf(const RuntimeConfig& config) {
  const std::filesystem::path path = config.file.path;
  return "the .NET runtime " + Printable(path.parent_path().filename().string());
}

std::optional<Clue> MalformedFrameworkConfiguration(const ApplicationReport& report) {
  return report.framework_config ? NotJson(report, report.framework_config->file, RuntimeOf(*report.framework_config))
                                 : std::nullopt;
}

std::optional<Clue> InvalidFrameworkConfiguration(const ApplicationReport& report) {
  const auto& config = report.framework_config;
  return config ? Invalid(report, config->file.path, config->fault, config->detail, RuntimeOf(*config)) : std::nullopt;
}

std::optional<Clue> BrokenHostPolicy(const ApplicationReport& report) {
  return report.host_policy
             ? Explaining(report, {kHostLibraryMissing, kHostLibraryNotLoaded}, AtBrokenFile(*report.host_policy))
             : std::nullopt;
}

// What the application is looked at for.
constexpr auto kApplicationChecks = std::to_array<Check<ApplicationReport>>({
    {Finding::kMissingAssembly, MissingAssembly},
    {Finding::kMissingConfig, MissingConfiguration},
    {Finding::kMalformedConfig, MalformedConfiguration},
    {Finding::kInvalidConfig, InvalidConfiguration},
    {Finding::kNoFrameworkNamed, NoFrameworkNamed},
    {Finding::kRollForwardVariable, RollForwardVariable},
});

// What the frameworks are looked at for that it is to run on.
constexpr auto kFrameworkChecks = std::to_array<Check<ApplicationReport>>({
    {Finding::kMissingFramework, MissingFramework},
    {Finding::kFrameworkConflict, ConflictingFrameworks},
    {Finding::kMalformedConfig, MalformedFrameworkConfiguration},
    {Finding::kInvalidConfig, InvalidFrameworkConfiguration},
    {Finding::kHostPolicyBroken, BrokenHostPolicy},
});

}  // namespace

Warnings ApplicationNearMisses(const ApplicationReport& report, bool hasVersion) {
  Warnings warnings = Noticed(kApplicationChecks, report);
  if (hasVersion) {
    Apply(kFrameworkChecks, report, warnings);
  }
  return warnings;
}

}  // namespace doctor
