// The managed application, the files beside it, and the context that the host makes of them.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "doctor/examine/broken_file.h"
#include "doctor/examine/config/dependencies.h"
#include "doctor/examine/config/json_file.h"
#include "doctor/examine/config/runtime_config.h"
#include "doctor/examine/frameworks.h"
#include "doctor/examine/probe.h"
#include "foundation/strings.h"

namespace doctor {

struct ApplicationReport {
  tov::WideString assembly;
  FileReport assembly_file;
  FileReport runtime_config;
  FileReport dependencies;
  ConfigFault config_fault = ConfigFault::kNone;  ///< Of the runtimeconfig.json, where it is JSON.
  std::string config_detail = {};                 ///< What the fault is about.
  IcuSettings icu = {};
  std::string root = {};                    ///< Where frameworks were looked for; empty when it is not known.
  std::vector<FrameworkReport> frameworks;  ///< What is needed, in the order in which the host comes to it.
  std::optional<FrameworkConflict> conflict = {};
  std::optional<RuntimeConfig> framework_config = {};       ///< A framework's own, where the host cannot use it.
  std::string wanting_dependency = {};                      ///< What the deps.json lacks, see `Dependencies`.
  std::optional<Dependencies> framework_dependencies = {};  ///< A framework's deps.json, where the host cannot use it.
  std::vector<BrokenFile> host_files = {};                  ///< Libraries that the host prepares with, where broken.
  std::optional<ContextProbe> context;                      ///< Empty when none was asked for.
};

/// Creates a context in a child.
using ContextProber = std::function<ContextProbe()>;

/// Looks at the product's application. `root` is where frameworks are looked for. Without a prober no context is
/// created.
ApplicationReport ExamineApplication(const tov::WideString& root, const ContextProber& prober);

}  // namespace doctor
