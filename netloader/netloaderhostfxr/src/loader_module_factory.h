// Where loaders come from.
#pragma once

#include <memory>

#include "netloader/netloaderhostfxr/src/host_fxr_module_parameters.h"
#include "netloader/netloaderhostfxr/src/library_interface.h"

namespace netloader {

class LoaderModuleInterfaceFactory {
 public:
  /// A loader that has bound the newest runtime host that works; empty, with the reasons in the log, when there is
  /// none. The environment variables of the parameters are set in either case. Throws what the loader's constructor and
  /// search throw.
  static std::shared_ptr<LoaderModuleInterface> CreateModuleLoader(const HostFxrModuleParameters& params);
};

}  // namespace netloader
