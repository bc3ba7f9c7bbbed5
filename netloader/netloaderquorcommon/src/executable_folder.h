// Where the running executable is.
#pragma once

#include <string_view>
#include <variant>

#include "foundation/strings.h"

namespace netloader::quor::detail {

/// The link to the running executable.
inline constexpr const char* kExecutableLink = "/proc/self/exe";

/// The folder of the executable that the link points at. Throws `tov::CheckResultFailedException` when it cannot be
/// determined.
tov::WideString ExecutableFolder(const char* link);

/// The folder that the link (to an executable) points into: its text up to its last "/", "/" itself for a file in the
/// root, empty without any "/". Or why there is none, as a result code: the link cannot be read, is too long, or is not
/// UTF-8.
std::variant<tov::WideString, int> FolderOfExecutable(const char* link);

/// The same for a link's text of up to 4096 bytes, all of which together count as too long.
std::variant<tov::WideString, int> FolderOfLinkText(std::string_view text);

}  // namespace netloader::quor::detail
