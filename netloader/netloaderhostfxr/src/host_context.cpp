#include "netloader/netloaderhostfxr/src/host_context.h"

#include <stdexcept>
#include <string>
#include <vector>

#include "netloader/netloaderhostfxr/src/platform_string.h"
#include "netloader/platform/environment.h"

namespace netloader {

HostContext CreateHostContext(HostFxrInitializeFn initialize, const tov::WideString& dotnetRoot,
                              const tov::WideString& hostPath, const tov::WideString& assembly, int argc,
                              const char** argv) {
  const std::string root = CastPathToPlatformString(dotnetRoot);
  const std::string host = CastPathToPlatformString(hostPath);
  const std::string application = CastPathToPlatformString(assembly);
  std::vector<const char*> arguments = {application.c_str()};
  if (argc > 0) {
    if (argv == nullptr) {
      // Thrown as a pointer on purpose: the entry point reports it as an unknown failure.
      throw new std::invalid_argument("argv is null");
    }
    arguments.insert(arguments.end(), argv, argv + argc);
  }
  const HostFxrInitializeParameters parameters{sizeof(parameters), host.c_str(), root.c_str()};
  HostContext context{};
  context.result = initialize(static_cast<int>(arguments.size()), arguments.data(), &parameters, &context.handle);
  context.error = platform_utils::GetErrorCode();
  return context;
}

}  // namespace netloader
