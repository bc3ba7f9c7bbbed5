// The number that a linker gives a library: equal numbers mean equal libraries.
#pragma once

#include <string>

namespace doctor {

/// The GNU build id in hexadecimal digits; empty where the file has none, is no 64-bit ELF file or cannot be read.
std::string BuildId(const std::string& file);

}  // namespace doctor
