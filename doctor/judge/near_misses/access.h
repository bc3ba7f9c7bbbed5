// What this user may do with files.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "doctor/judge/near_misses/checks.h"

namespace doctor {

/// Whether this user may use the file in this way (`R_OK`, `X_OK`), with the rights that a launch has.
bool MayUse(const std::filesystem::path& file, int mode);

/// The letter that `chmod` has for the rights that count for this user: "u" of an owner, "g" of a member of the file's
/// group, else "o".
std::string RightsThatCount(const std::filesystem::path& file);

/// The command that gives this user rights to the file, such as "r" or "rx".
std::string CommandToPermit(const std::filesystem::path& file, std::string_view rights);

/// The clue to a file that this user may not use, with `{who}` for `chmod`.
Clue AtClosed(const std::filesystem::path& file);

/// The first folder above the file that this user cannot enter; nothing in it can be found.
std::optional<Clue> ClosedFolderAbove(const std::filesystem::path& file);

/// The first of the folders above the file, or the file itself, that users who neither own it nor are of its group may
/// not use; empty when they may use all of it, or it is not there.
std::string ClosedToOthers(const std::filesystem::path& file);

}  // namespace doctor
