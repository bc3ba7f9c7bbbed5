// Why a file of the application is not as it should be, in words.
#pragma once

#include <string>

#include "doctor/examine/config/json_file.h"

namespace doctor {

/// The system's words, or what the file is instead; empty for one that is present.
std::string Detail(const FileReport& file);

}  // namespace doctor
