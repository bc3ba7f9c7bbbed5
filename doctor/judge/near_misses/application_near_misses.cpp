#include <cerrno>
#include <filesystem>

#include "doctor/child/child.h"
#include "doctor/examine/application_report.h"
#include "doctor/examine/broken_file.h"
#include "doctor/examine/config/dependencies.h"
#include "doctor/examine/config/json_file.h"
#include "doctor/examine/config/runtime_config.h"
#include "doctor/examine/probe.h"
#include "doctor/judge/findings.h"
#include "doctor/judge/near_misses/access.h"
#include "doctor/judge/near_misses/broken_file_clue.h"
#include "doctor/judge/near_misses/checks.h"
#include "doctor/judge/near_misses/host_answer.h"
#include "doctor/judge/near_misses/near_misses.h"
#include "doctor/judge/warning.h"
#include "doctor/judge/words/message.h"
#include "doctor/judge/words/named.h"
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
  return Explaining(report, {{kHostLibraryMissing}}, AtPath(report.runtime_config.path));
}

constexpr const char* kProductAgain = "install the product again";

std::string StateOf(const FileReport& file) {
  if (file.state == FileState::kUnreadable) {
    return file.error == EACCES ? "cannot be read by this user" : "is not a regular file";
  }
  return file.line > 0 ? "is not JSON, line " + std::to_string(file.line) : "does not hold a JSON object";
}

// A file that is there, and is not read or understood.
std::optional<Clue> Unusable(const ApplicationReport& report, const FileReport& file, const std::string& again,
                             std::uint32_t status) {
  if (file.state != FileState::kMalformed && file.state != FileState::kUnreadable) {
    return std::nullopt;
  }
  const std::string command = file.error == EACCES ? CommandToPermit(file.path, "r") : again;
  return Explaining(report, {{status}}, AtPath(file.path, {{"fault", StateOf(file)}, {"command", command}}));
}

std::optional<Clue> MalformedConfiguration(const ApplicationReport& report) {
  return Unusable(report, report.runtime_config, kProductAgain, kInvalidConfig);
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
    {ConfigFault::kMisshapen, "has a {detail} of another kind than the host takes it for"},
});
static_assert(IsComplete(kFaultWords, ConfigFault::kMisshapen));

std::optional<Clue> Invalid(const ApplicationReport& report, const std::string& path, ConfigFault fault,
                            const std::string& detail, const std::string& again) {
  if (fault == ConfigFault::kNone || fault == ConfigFault::kUnknownVariable) {
    return std::nullopt;
  }
  const std::string words = Filled(RowOf(kFaultWords, fault).code, {{"detail", Printable(detail)}});
  const Answers answers =
      fault == ConfigFault::kMisshapen ? Answers{{}, /*ends_process=*/true} : Answers{{kInvalidConfig}};
  return Explaining(report, answers, AtPath(path, {{"fault", words}, {"command", again}}));
}

std::optional<Clue> InvalidConfiguration(const ApplicationReport& report) {
  return Invalid(report, report.runtime_config.path, report.config_fault, report.config_detail, kProductAgain);
}

std::optional<Clue> NoFrameworkNamed(const ApplicationReport& report) {
  const bool isSound = report.runtime_config.state == FileState::kPresent && report.config_fault == ConfigFault::kNone;
  if (!isSound || !report.frameworks.empty() || report.conflict) {
    return std::nullopt;
  }
  return Explaining(report, {{kHostLibraryMissing}}, AtPath(report.runtime_config.path));
}

std::optional<Clue> RollForwardVariable(const ApplicationReport& report) {
  return report.config_fault == ConfigFault::kUnknownVariable
             ? Explaining(report, {{kInvalidConfig}},
                          {"DOTNET_ROLL_FORWARD", {{"value", Printable(report.config_detail)}}})
             : std::nullopt;
}

// The version folder that the file lies in names what is to be installed again.
std::string RuntimeAgain(const FileReport& file) {
  const std::filesystem::path path = file.path;
  return "install the .NET runtime " + Printable(path.parent_path().filename().string()) + " again";
}

std::optional<Clue> MalformedFrameworkConfiguration(const ApplicationReport& report) {
  const auto& config = report.framework_config;
  return config ? Unusable(report, config->file, RuntimeAgain(config->file), kInvalidConfig) : std::nullopt;
}

std::optional<Clue> InvalidFrameworkConfiguration(const ApplicationReport& report) {
  const auto& config = report.framework_config;
  return config ? Invalid(report, config->file.path, config->fault, config->detail, RuntimeAgain(config->file))
                : std::nullopt;
}

// What is wanting matters only where the host has ended the process: others may do without it.
std::optional<Clue> Wanting(const ApplicationReport& report, const Dependencies& read, const std::string& again) {
  if (auto clue = Unusable(report, read.file, again, kNotResolved)) {
    return clue;
  }
  if (read.wanting.empty() || !report.context || report.context->child.end == ChildEnd::kFinished) {
    return std::nullopt;
  }
  return Explaining(report, {{}, /*ends_process=*/true},
                    AtPath(read.file.path, {{"fault", "has no " + Printable(read.wanting)}, {"command", again}}));
}

std::optional<Clue> UnusableDependencies(const ApplicationReport& report) {
  return Wanting(report, {report.dependencies, report.wanting_dependency}, kProductAgain);
}

std::optional<Clue> UnusableFrameworkDependencies(const ApplicationReport& report) {
  const auto& read = report.framework_dependencies;
  return read ? Wanting(report, *read, RuntimeAgain(read->file)) : std::nullopt;
}

std::optional<Clue> BrokenHostFile(const ApplicationReport& report) {
  if (report.host_files.empty()) {
    return std::nullopt;
  }
  const BrokenFile& file = report.host_files.front();
  return Explaining(report, {{kHostLibraryMissing, kHostLibraryNotLoaded, kRuntimeNotFound}, file.is_cut_library},
                    AtBrokenFile(file));
}

// What the application is looked at for.
constexpr auto kApplicationChecks = std::to_array<Check<ApplicationReport>>({
    {Finding::kMissingAssembly, MissingAssembly},
    {Finding::kMissingConfig, MissingConfiguration},
    {Finding::kMalformedConfig, MalformedConfiguration},
    {Finding::kInvalidConfig, InvalidConfiguration},
    {Finding::kNoFrameworkNamed, NoFrameworkNamed},
    {Finding::kRollForwardVariable, RollForwardVariable},
    {Finding::kMalformedDependencies, UnusableDependencies},
});

// What the frameworks are looked at for that it is to run on.
constexpr auto kFrameworkChecks = std::to_array<Check<ApplicationReport>>({
    {Finding::kMissingFramework, MissingFramework},
    {Finding::kFrameworkConflict, ConflictingFrameworks},
    {Finding::kMalformedConfig, MalformedFrameworkConfiguration},
    {Finding::kInvalidConfig, InvalidFrameworkConfiguration},
    {Finding::kMalformedDependencies, UnusableFrameworkDependencies},
    {Finding::kHostFileBroken, BrokenHostFile},
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
