// The frameworks that an application runs on, as the host finds them under a runtime root.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "doctor/examine/config/runtime_config.h"

namespace doctor {

/// A framework that the application, or another framework, asks for.
struct FrameworkReport {
  std::string name;
  std::string version;
  RollForward roll_forward = RollForward::kMinor;
  std::string named_by = {};            ///< The runtimeconfig.json that names it.
  std::optional<bool> is_there = {};    ///< Whether the root has a version that serves; empty without a root.
  std::vector<std::string> found = {};  ///< The versions that the root has, the oldest first.
  std::string taken = {};               ///< The one that the host takes; empty when it takes none.
  std::string folder = {};              ///< Where that one is.
};

/// Two files ask for versions of one framework that do not go together.
struct FrameworkConflict {
  std::string name;
  std::string lower;   ///< A version that is asked for, and may not roll forward as far as the other one.
  std::string higher;  ///< The other one.
};

struct Frameworks {
  std::vector<FrameworkReport> reports = {};  ///< In the order in which the host comes to them.
  std::optional<FrameworkConflict> conflict = {};
  std::optional<RuntimeConfig> broken_config = {};  ///< Of a framework, where the host cannot use it.
};

/// Resolves what `config` names, and what those frameworks name themselves, by the rules of the .NET 6 host. An empty
/// root means that none is known.
Frameworks ResolveFrameworks(const RuntimeConfig& config, const std::string& root,
                             const RollForwardVariables& variables);

}  // namespace doctor
