// The managed application, the files beside it, and the context that the host makes of them.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "doctor/examine/probe.h"
#include "foundation/strings.h"

namespace doctor {

enum class FileState { kPresent, kMissing, kUnreadable, kMalformed };

struct FileReport {
  std::string path;
  FileState state = FileState::kMissing;
  int error = 0;  ///< Why it cannot be opened, as an errno value; 0 when it can.
};

/// A framework that the application's runtimeconfig.json names.
struct FrameworkReport {
  std::string name;
  std::string version;
  std::optional<bool> is_there;  ///< Whether the root has a version of it that could serve; empty without a root.
};

struct ApplicationReport {
  tov::WideString assembly;
  FileReport assembly_file;
  FileReport runtime_config;
  FileReport dependencies;
  std::vector<FrameworkReport> frameworks;
  std::optional<ContextProbe> context;  ///< Empty when none was asked for.
};

/// Creates a context in a child.
using ContextProber = std::function<ContextProbe()>;

/// Looks at the product's application. `root` is where frameworks are looked for. Without a prober no context is
/// created.
ApplicationReport ExamineApplication(const tov::WideString& root, const ContextProber& prober);

}  // namespace doctor
