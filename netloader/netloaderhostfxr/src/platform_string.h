// Paths as the operating system takes them.
#pragma once

#include <string>

#include "foundation/strings.h"

namespace netloader {

/// The path as UTF-8. Throws `tov::CheckResultFailedException` when it has none.
std::string CastPathToPlatformString(tov::WideString path);

}  // namespace netloader
