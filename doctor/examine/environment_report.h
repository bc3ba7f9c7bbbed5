// What a launch does to the environment, and what is there now.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "doctor/examine/settings_report.h"

namespace doctor {

struct VariableReport {
  std::string name;
  std::optional<std::string> value;  ///< What a launch sets it to; empty when it removes it.
  std::optional<std::string> now;    ///< What it holds; empty when it is not set.
};

/// A variable that the runtime, its host or the dynamic loader obeys.
struct ObeyedVariable {
  std::string name;
  std::string value;
};

struct EnvironmentReport {
  std::vector<VariableReport> variables;  ///< In the order in which a launch applies them.
  std::vector<ObeyedVariable> obeyed;     ///< Set, and left alone by a launch; by name.
  std::string log_folder;                 ///< Where the log would go if there were one.
};

EnvironmentReport ExamineEnvironment(const SettingsReport& settings);

}  // namespace doctor
