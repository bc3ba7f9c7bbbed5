// What this product runs.
#pragma once

#include <map>

#include "foundation/strings.h"

namespace launcher {

/// The launcher's own name.
inline constexpr const char16_t* kLoaderName = u"grellin_loader";

/// The managed assembly, a file in the product's folder.
inline constexpr const char16_t* kAssemblyFileName = u"grellin_utils.dll";

/// What is set for the runtime, over and above what is set for every product.
std::map<tov::WideString, tov::WideString> RuntimeEnvironment();

}  // namespace launcher
