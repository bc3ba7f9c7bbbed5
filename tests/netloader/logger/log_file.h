// A log file as it stands on the disk.
#pragma once

#include <filesystem>
#include <string>

#include "tests/support/temp_folder.h"

namespace tests {

/// The bytes of the file with the time stamps, where a line begins with one, written as "TIME".
[[nodiscard]] std::string LogText(const std::filesystem::path& file);

/// The line that a new log file begins with.
[[nodiscard]] std::string FirstLine(const std::filesystem::path& file);

}  // namespace tests
