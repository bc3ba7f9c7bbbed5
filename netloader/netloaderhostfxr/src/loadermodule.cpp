#include "netloader/netloaderhostfxr/src/loadermodule.h"

#include <dlfcn.h>

#include <string>
#include <utility>

#include "foundation/utf.h"
#include "netloader/logger/global_logger.h"
#include "netloader/logger/log.h"
#include "netloader/logger/logger.h"
#include "netloader/netloaderhostfxr/src/assembly_path.h"
#include "netloader/netloaderhostfxr/src/host_binding.h"
#include "netloader/netloaderhostfxr/src/host_context.h"
#include "netloader/netloaderhostfxr/src/library_module.h"
#include "netloader/netloaderhostfxr/src/version_discovery.h"
#include "netloader/netloaderhostfxr/src/version_order.h"
#include "netloader/platform/environment.h"
#include "netloader/utils/path_utils.h"

namespace netloader {

using enum logger::LogLevel;
using logger::Log;
using tov::WideString;

namespace {

// Writes the lines of a walk.
class DiscoveryLog final : public DiscoveryListener {
 public:
  explicit DiscoveryLog(const WideString& library) : library_(library) {}

  void VersionMet(const WideString& fxrFolder, const WideString& version) override {
    if (logger::IsEmptyLoggerCurrent()) {
      return;  // Not even the path is built.
    }
    Log(TRACE, L"LoaderModule: Loading dotnet processing version file: '",
        HostLibraryPath(fxrFolder, version, library_), L"'", L", version: '", version, L"'");
  }
  void FolderJudged(const VersionFinding& finding) override {
    switch (finding.verdict) {
      case VersionVerdict::kNotAFolder:
        return Log(TRACE, L"LoaderModule: Loading dotnet skipped processing fxr path: '", finding.name, L"'",
                   L". Not a directory.");
      case VersionVerdict::kAccepted:
        return Log(TRACE, L"LoaderModule: Version candidate is ok: '", finding.name, L"'");
      default:
        return Log(TRACE, L"LoaderModule: Version candidate is skipped: '", finding.name, L"'");
    }
  }

 private:
  const WideString& library_;
};

void LogUnwalkedFolder(const Discovery& discovery) {
  if (discovery.state == FxrFolderState::kUnreadable) {
    Log(ERROR, L"LoaderModule: Could not find hostfxr version from path ", discovery.fxr_folder,
        L". Initialization has been failed.");
  } else {
    Log(ERROR, L"LoaderModule: Loading dotnet failed. Invalid path to dotnet fxr folder: '", discovery.fxr_folder,
        L"'");
  }
}

// Writes the lines of binding one host.
class BindingLog final : public BindingListener {
 public:
  explicit BindingLog(const WideString& path) : path_(path) {}

  void LibraryNotOpened(const std::string& /*error*/) override {
    Log(ERROR, L"LoaderModule: Failed to load hostfxr library: '", path_, L"'");
    // The reason was fetched when the opening failed, so there is none left, and the line ends at its opening quote.
    Log(ERROR, L"LoaderModule: Loading hostfxr library completed with error: '", ::dlerror(), L"'");
  }
  void LibraryOpened() override { Log(TRACE, L"LoaderModule: hostfxr library loaded: '", path_, L"'"); }
  void FunctionNotFound(const char* name, const std::string& /*error*/) override {
    LogFunctionLoadError(path_, tov::text::ToUtf16(name));
  }
  void FunctionIsNull(const char* /*name*/) override {
    Log(ERROR, L"LoaderModule: Failed to get necessary functions from hostfxr library");
  }
  void HostBound() override {
    Log(TRACE, L"LoaderModule: All function has been obtained successfully from hostfxr library");
  }

 private:
  const WideString& path_;
};

}  // namespace

LoaderModule::LoaderModule(const HostFxrModuleParameters& params)
    : productRoot(params.productRoot),
      dotnetRootPath(params.dotnetRootPath),
      dotnetVersionPrefix(params.dotnetVersionPrefix),
      hostFxrSegment(kHostFxrFileName) {
  platform_utils::ApplyRuntimeEnvironment(params.environmentVariables);
  Log(TRACE, L"LoaderModule: Created with params: ", L"dotnetRootPath = '", dotnetRootPath, L"'",
      L", dotnetVersionPrefix = '", dotnetVersionPrefix, L"'", L", productRoot = '", productRoot, L"'",
      L", hostFxrSegment = '", hostFxrSegment, L"'");
}

LoaderModule::~LoaderModule() {
  const LibraryHandle goesFirst = std::move(hostFxrHandle);  // While the other members are still there.
}

bool LoaderModule::LoadDotNetWithHigerVersion() {
  DiscoveryLog log(hostFxrSegment);
  const Discovery discovery = DiscoverVersions(dotnetRootPath, dotnetVersionPrefix, hostFxrSegment, log);
  if (discovery.state != FxrFolderState::kWalked) {
    LogUnwalkedFolder(discovery);
    return false;
  }
  const auto attempt = [&](const WideString& version, const WideString& path) { return TryVersion(version, path); };
  if (TryNewestFirst(discovery, dotnetVersionPrefix, hostFxrSegment, attempt)) {
    return true;
  }
  Log(ERROR, L"LoaderModule: Could not load hostfxr. Initialization has been failed.");
  return false;
}

bool LoaderModule::TryVersion(const WideString& version, const WideString& path) {
  Log(TRACE, L"LoaderModule: Attempt to load fxr file: '", path, L"'", L", version: '", version, L"'");
  if (!LoadDotNet(path)) {
    Log(ERROR, L"LoaderModule: Failed to load fxr: '", path, L"'");
    return false;
  }
  Log(TRACE, L"LoaderModule: hostfxr file has been successfully loaded: '", path, L"'", L", version: '", version, L"'");
  hostFxrPath = path;
  return true;
}

bool LoaderModule::VersionSortPredicate(const WideString& a, const WideString& b) const {
  return VersionNumber(a, dotnetVersionPrefix) > VersionNumber(b, dotnetVersionPrefix);
}

bool LoaderModule::LoadDotNet(const WideString& path) {
  if (!utils::CheckIsValidPath(path)) {
    Log(ERROR, L"LoaderModule: Loading from relative path is prohibited path: '", path, L"'");
    return false;
  }
  BindingLog log(path);
  HostBinding host = BindHost(path, log);
  if (!host.is_opened) {
    hostFxrHandle.reset();
    return false;
  }
  hostFxrHandle.overwrite(std::move(host.library));  // Also a library whose functions are null: it stays open.
  initFn = host.functions.initialize;
  runAppFn = host.functions.run_app;
  closeFn = host.functions.close;
  return host.functions.AreComplete();
}

std::shared_ptr<LibraryInterface> LoaderModule::LoadAssembly(const WideString& path, int argc, const char** argv) {
  Log(TRACE, L"LoaderModule: Loading library: '", path, L"'");
  const WideString assembly = AssemblyPath(path);
  if (!ArePathsValid(assembly)) {
    return nullptr;
  }
  Log(TRACE, L"LoaderModule: Loading library from path: '", assembly, L"'");
  void* handle = InitializeContext(assembly, argc, argv);
  if (handle == nullptr) {
    return nullptr;
  }
  Log(TRACE, L"LoaderModule: Library context (hostfxr_handle) has been obtained successfully");
  return std::make_shared<LibraryModule>(shared_from_this(), handle, runAppFn, closeFn);
}

bool LoaderModule::ArePathsValid(const WideString& assembly) const {
  if (!utils::CheckIsValidPath(assembly)) {
    Log(ERROR, L"LoadAssembly: Loading assembly with relative path is prohibited: path: '", assembly, L"'");
    return false;
  }
  if (!utils::CheckIsValidPath(dotnetRootPath)) {
    Log(ERROR, L"LoadAssembly: Using dotnet_root with relative path is prohibited: path: '", dotnetRootPath, L"'");
    return false;
  }
  if (!utils::CheckIsValidPath(hostFxrPath)) {
    Log(ERROR, L"LoadAssembly: Using hostFxrPath with relative path is prohibited: path: '", hostFxrPath, L"'");
    return false;
  }
  return true;
}

void* LoaderModule::InitializeContext(const WideString& assembly, int argc, const char** argv) const {
  const HostContext context = CreateHostContext(initFn, dotnetRootPath, hostFxrPath, assembly, argc, argv);
  if (context.IsUsable()) {
    return context.handle;
  }
  Log(ERROR, L"LoaderModule: Get library context (hostfxr_handle) failed for library: '", assembly, L"'", L", result ",
      context.result, L", lastErrorCode ", context.error);
  return nullptr;
}

void LogFunctionLoadError(WideString path, WideString functionName) {  // NOLINT(performance-unnecessary-value-param)
  Log(ERROR, L"LoaderModule: Failed to load ", functionName, L" function: '", path, L"'");
  // As a rule the reason was fetched before; the line then ends at its opening quote.
  Log(ERROR, L"LoaderModule: Loading ", functionName, L" function completed with error: '", ::dlerror(), L"'");
}

}  // namespace netloader
