// Looking at POSIX paths held as wide strings. Nothing here touches the file system.
#pragma once

#include "foundation/strings.h"

namespace netloader::utils {

/// True for an absolute path: not empty and beginning with "/". Nothing else is checked.
bool CheckIsValidPath(const tov::WideString& path);

/// What follows the last "/"; the whole path without one. A "/" at the end is not ignored: it gives an empty name.
tov::WideString GetLastFolderName(const tov::WideString& path);

/// What precedes the last "/": "/" when that is the first unit, empty without one. A "/" at the end is not ignored:
/// "/a/b/" gives "/a/b".
tov::WideString GetParentPath(const tov::WideString& path);

}  // namespace netloader::utils
