// What a runtimeconfig.json says of frameworks: an application's, or a framework's own.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "doctor/examine/config/json_file.h"

namespace doctor {

/// How far from the version that is asked for the host may go.
enum class RollForward { kDisable, kLatestPatch, kMinor, kLatestMinor, kMajor, kLatestMajor };

/// The way of that name, in whatever letter case.
std::optional<RollForward> RollForwardOf(std::string_view name);

/// The variables that change what the files say; empty where they are not set, or set to nothing.
struct RollForwardVariables {
  std::string roll_forward;       ///< DOTNET_ROLL_FORWARD, which wins over the files.
  std::string on_no_candidate;    ///< DOTNET_ROLL_FORWARD_ON_NO_CANDIDATE_FX, which the files win over.
  bool takes_prerelease = false;  ///< DOTNET_ROLL_FORWARD_TO_PRERELEASE.
};

/// Those that a launch leaves in the environment.
RollForwardVariables VariablesOfLaunch();

/// A framework that is asked for.
struct FrameworkReference {
  std::string name;
  std::string version;
  RollForward roll_forward = RollForward::kMinor;
  bool applies_patches = true;
};

/// Why the host refuses a file that is JSON.
enum class ConfigFault {
  kNone,
  kNoOptions,           ///< There is no object runtimeOptions.
  kNoName,              ///< A framework has no name.
  kNoVersion,           ///< A framework has no version.
  kNamedTwice,          ///< A framework is named twice.
  kUnknownRollForward,  ///< A rollForward has no meaning.
  kUnknownVariable,     ///< DOTNET_ROLL_FORWARD has none.
  kMixedSettings,       ///< rollForward stands beside one of the settings that it replaces.
  kMisshapen,           ///< A member is not of the kind that the host takes it for, which ends the process.
};

/// What a file says of ICU.
struct IcuSettings {
  bool is_invariant = false;  ///< Whether it makes the runtime do without.
  std::string own = {};       ///< The version that comes with the application, if one does.
};

struct RuntimeConfig {
  FileReport file;
  ConfigFault fault = ConfigFault::kNone;
  std::string detail = {};  ///< What the fault is about: a framework, a value.
  std::vector<FrameworkReference> frameworks = {};
  IcuSettings icu = {};
};

/// Reads the file. One that is missing or not JSON names no framework.
RuntimeConfig ReadRuntimeConfig(const std::string& path, const RollForwardVariables& variables);

}  // namespace doctor
