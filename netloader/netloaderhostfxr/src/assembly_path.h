// Where the managed assembly is.
#pragma once

#include "foundation/strings.h"

namespace netloader {

extern const tov::WideString kAssemblyDir;  ///< The product's folder.

/// `kAssemblyDir` and the file name joined.
tov::WideString AssemblyPath(const tov::WideString& fileName);

}  // namespace netloader
