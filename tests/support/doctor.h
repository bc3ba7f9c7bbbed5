// Starting the built doctor.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/process.h"

namespace tests {

/// The built executable.
[[nodiscard]] std::filesystem::path DoctorFile();

/// The doctor in an empty environment. A sanitizer leaves the crashes of its children alone.
[[nodiscard]] Command Doctor(std::vector<std::string> arguments = {});

}  // namespace tests
