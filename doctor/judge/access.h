// What this user may do with files.
#pragma once

#include <filesystem>
#include <optional>

#include "doctor/judge/checks.h"

namespace doctor {

/// Whether this user may use the file in this way (`R_OK`, `X_OK`), with the rights that a launch has.
bool MayUse(const std::filesystem::path& file, int mode);

/// The first folder above the file that this user cannot enter; nothing in it can be found.
std::optional<Clue> ClosedFolderAbove(const std::filesystem::path& file);

}  // namespace doctor
