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

/// The log as it was written. Both are raw bytes.
struct LoaderLog {
  std::string file;          ///< The whole path of the file that was written, or was to be.
  std::string failure = {};  ///< Why the log is not in it, or not all of it; empty when it is.
};

/// Has the file logger write `file` (made absolute; ".log" is added when it does not end so) while a child does what a
/// launch does, up to the context, and runs nothing. A log that ends where a library ends the launch is whole.
LoaderLog WriteLoaderLog(const std::string& file, const Walk& walk, const Patience& patience);

/// The lines of such a log, which is written to a folder of its own and taken away again; in their place, or behind
/// them, why they are not all there.
std::string LoaderLogText(const Walk& walk, const Patience& patience);

}  // namespace doctor
