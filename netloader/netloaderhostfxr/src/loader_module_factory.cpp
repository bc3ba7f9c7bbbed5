#include "netloader/netloaderhostfxr/src/loader_module_factory.h"

#include "netloader/logger/log.h"
#include "netloader/logger/logger.h"
#include "netloader/netloaderhostfxr/src/loadermodule.h"

namespace netloader {

using enum logger::LogLevel;
using logger::Log;

std::shared_ptr<LoaderModuleInterface> LoaderModuleInterfaceFactory::CreateModuleLoader(
    const HostFxrModuleParameters& params) {
  auto module = std::make_shared<LoaderModule>(params);
  if (!module->LoadDotNetWithHigerVersion()) {
    // The root has no closing quote in this line, on purpose.
    Log(TRACE, L"LoaderModuleFactory: Failed to load module from '", params.dotnetRootPath, L", versionPrefix = '",
        params.dotnetVersionPrefix, L"'", L", productRoot = '", params.productRoot, L"'");
    return nullptr;
  }
  Log(TRACE, L"LoaderModuleFactory: Module from '", params.dotnetRootPath, L"' has been loaded successfully",
      L", versionPrefix = '", params.dotnetVersionPrefix, L"'", L", productRoot = '", params.productRoot, L"'");
  return module;
}

}  // namespace netloader
