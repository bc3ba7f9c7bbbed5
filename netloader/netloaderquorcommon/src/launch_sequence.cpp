#include "netloader/netloaderquorcommon/src/launch_sequence.h"

#include "netloader/logger/global_logger.h"
#include "netloader/logger/log.h"
#include "netloader/logger/logger.h"
#include "netloader/netloaderhostfxr/src/host_fxr_module_parameters.h"
#include "netloader/netloaderhostfxr/src/loader_module_factory.h"
#include "netloader/netloaderquorcommon/src/dotnet_settings.h"

namespace netloader::quor {

using enum logger::LogLevel;
using logger::Log;

std::shared_ptr<LibraryInterface> InitAndLoadAssembly(const tov::WideString& loaderName,
                                                      const tov::WideString& assemblyPath, int argc, const char** argv,
                                                      const std::map<tov::WideString, tov::WideString>& environment) {
  logger::LoggerSettings loggingSettings;
  InitNetloaderLoggingSettingsOrUseDefault(loggingSettings);
  loggingSettings.logName = loaderName;
  logger::InitEmptyLogger();
  return detail::LoadAssembly(detail::Provider(), assemblyPath, argc, argv, environment);
}

std::shared_ptr<LibraryInterface> detail::LoadAssembly(DotnetSettingsProvider& provider,
                                                       const tov::WideString& assemblyPath, int argc, const char** argv,
                                                       const std::map<tov::WideString, tov::WideString>& environment) {
  Log(TRACE, L"InitAndLoadAssembly: Starting ...");

  HostFxrModuleParameters parameters;
  if (!InitLoaderSettings(provider, parameters)) {
    Log(ERROR, L"InitAndLoadAssembly: Failed to load settings ...");
    return nullptr;
  }
  parameters.environmentVariables = environment;

  const auto loader = LoaderModuleInterfaceFactory::CreateModuleLoader(parameters);
  if (loader == nullptr) {
    Log(ERROR, L"InitAndLoadAssembly: Failed to create dotnet loader ...");
    return nullptr;
  }
  return loader->LoadAssembly(assemblyPath, argc, argv);
}

}  // namespace netloader::quor
