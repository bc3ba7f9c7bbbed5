// What the environment's variables hold once a launch has done its part.
#pragma once

#include <optional>
#include <string>

namespace doctor {

/// The value that the runtime is given; empty where the variable is not set, or a launch removes it.
std::optional<std::string> LaunchVariable(const std::string& name);

}  // namespace doctor
