// The loader's own log of a walk.
#pragma once

#include <optional>
#include <string>

#include "doctor/child/patience.h"
#include "foundation/strings.h"

namespace doctor {

/// What the log is of.
struct Walk {
  std::string settings_path;                 ///< The file that is read as the settings.
  std::optional<tov::WideString> root = {};  ///< Counts instead of the root in the settings. "": no root is known.
};

/// Has the file logger write `file` (made absolute; ".log" is added when it does not end so) while a child does what a
/// launch does, up to the context, and runs nothing. Returns the log's path. Throws `std::system_error` when it could
/// not be written.
std::string WriteLoaderLog(const std::string& file, const Walk& walk, const Patience& patience);

}  // namespace doctor
