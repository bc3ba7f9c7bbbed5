// What configures the host loader.
#pragma once

#include <map>

#include "foundation/strings.h"

namespace netloader {

struct HostFxrModuleParameters {
  tov::WideString dotnetRootPath;       ///< The .NET installation; its hosts are looked for under "host/fxr".
  tov::WideString dotnetVersionPrefix;  ///< What the name of an acceptable version folder begins with.
  tov::WideString productRoot;          ///< The product's folder. Only carried and logged.
  std::map<tov::WideString, tov::WideString> environmentVariables;  ///< Set before the runtime starts.
};

}  // namespace netloader
