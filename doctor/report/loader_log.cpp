#include "doctor/report/loader_log.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "doctor/child/child.h"
#include "doctor/judge/text.h"
#include "launcher/product.h"
#include "netloader/logger/global_logger.h"
#include "netloader/netloaderhostfxr/src/loader_module_factory.h"
#include "netloader/netloaderquorcommon/src/dotnet_settings.h"
#include "netloader/netloaderquorcommon/src/executable_folder.h"
#include "netloader/netloaderquorcommon/src/settings_constants.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;
namespace logger = netloader::logger;
namespace quor = netloader::quor;

constexpr const char* kExtension = ".log";

// The settings as a launch takes them, or as they would be with the root in their place. False when there is no root.
bool FillParameters(const Walk& walk, netloader::HostFxrModuleParameters& parameters) {
  if (!walk.root) {
    logger::LoggerSettings unused;
    quor::InitNetloaderLoggingSettingsOrUseDefault(unused);
    return quor::TryInitNetloaderSettings(parameters);
  }
  if (walk.root->empty()) {
    return false;
  }
  parameters.dotnetRootPath = *walk.root;
  parameters.dotnetVersionPrefix = quor::kDotnetVersionPrefix;
  parameters.productRoot = quor::ExecutableFolder(quor::kExecutableLink);
  return true;
}

Answer WalkTheRoad(const logger::LoggerSettings& place, const Walk& walk) {
  logger::InitGlobalFileLogger(place);
  if (!logger::GetLogger()->IsValid() || logger::IsEmptyLoggerCurrent()) {
    return {"not written"};
  }
  netloader::HostFxrModuleParameters parameters;
  if (FillParameters(walk, parameters)) {
    parameters.environmentVariables = launcher::RuntimeEnvironment();
    if (const auto loader = netloader::LoaderModuleInterfaceFactory::CreateModuleLoader(parameters)) {
      // The context is left to the end of the process: only running the application closes it.
      static_cast<void>(loader->LoadAssembly(launcher::kAssemblyFileName, 0, nullptr));
    }
  }
  return {"written"};
}

}  // namespace

std::string WriteLoaderLog(const std::string& file, const Walk& walk, std::chrono::milliseconds limit) {
  fs::path path = fs::absolute(file).lexically_normal();
  if (path.extension() != kExtension) {
    path += kExtension;
  }
  const logger::LoggerSettings place{ToUtf16(path.parent_path().string()), ToUtf16(path.stem().string())};
  const ChildResult result = RunInChild([&] { return WalkTheRoad(place, walk); }, limit);
  if (result.end == ChildEnd::kNotStarted) {
    throw std::system_error(result.code, std::generic_category(), "a process to write the log");
  }
  if (result.end == ChildEnd::kFinished && result.answer.front() != "written") {
    throw std::system_error(std::make_error_code(std::errc::io_error), "the log " + Quoted(path.string()));
  }
  return path.string();
}

}  // namespace doctor
