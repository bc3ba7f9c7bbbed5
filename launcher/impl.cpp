#include "launcher/impl.h"

#include <memory>
#include <vector>

#include "launcher/product/product.h"
#include "netloader/logger/log.h"
#include "netloader/logger/logger.h"
#include "netloader/netloaderhostfxr/src/library_interface.h"
#include "netloader/netloaderquorcommon/src/launch_sequence.h"

using enum netloader::logger::LogLevel;
using netloader::logger::Log;

int Impl(int argc, char** argv) {
  std::vector<const char*> arguments;  // Empty, its data is null: no arguments are announced then.
  if (argc > 1) {
    arguments.assign(argv + 1, argv + argc);
  }
  const auto environment = launcher::RuntimeEnvironment();
  const std::shared_ptr<netloader::LibraryInterface> application =
      netloader::quor::InitAndLoadAssembly(launcher::kLoaderName, launcher::kAssemblyFileName,
                                           static_cast<int>(arguments.size()), arguments.data(), environment);
  if (application == nullptr) {
    Log(ERROR, L"GrellinLoader: Failed to load assembly ...");
    return -1;
  }
  Log(TRACE, L"GrellinLoader: Starting assembly entry point ...");
  application->Run();
  Log(TRACE, L"GrellinLoader: Assembly has finished it's work ...");
  return 0;
}
