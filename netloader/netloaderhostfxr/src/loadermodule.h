// The loader: binds the newest runtime host that works, and loads applications through it.
#pragma once

#include <memory>

#include "foundation/strings.h"
#include "netloader/netloaderhostfxr/src/host_fxr_module_parameters.h"
#include "netloader/netloaderhostfxr/src/host_library.h"
#include "netloader/netloaderhostfxr/src/hostfxr_api.h"
#include "netloader/netloaderhostfxr/src/library_interface.h"

namespace netloader {

/// Finds, loads and calls a runtime host. Every failure is logged; nothing throws but where a declaration says so, and
/// for want of memory. Used by one thread.
class LoaderModule : public LoaderModuleInterface, public std::enable_shared_from_this<LoaderModule> {
 public:
  /// Sets the runtime's environment: the fixed variables first, so that the parameters' own, applied in the order of
  /// their names, win. An entry without a name is skipped. Throws `std::bad_cast` for text that is not valid UTF-16.
  explicit LoaderModule(const HostFxrModuleParameters& params);
  /// Closes the host library, unless an exception is on its way up (see host_library.h).
  ~LoaderModule() override;

  /// Throws `tov::CheckResultFailedException` for a path that has no UTF-8 form, a pointer to `std::invalid_argument`
  /// when arguments are announced and `argv` is null, and `std::bad_weak_ptr` for a loader that no shared pointer owns.
  /// Only the host's result 0 with a handle is success.
  std::shared_ptr<LibraryInterface> LoadAssembly(const tov::WideString& path, int argc, const char** argv) override;

  /// Tries the accepted versions, the newest first, until one loads. True when one did. Throws what `VersionNumber`
  /// throws.
  bool LoadDotNetWithHigerVersion();

  /// True when version `a` is tried before version `b` (see version_order.h, also for what it throws).
  bool VersionSortPredicate(const tov::WideString& a, const tov::WideString& b) const;

  /// Loads one host library and binds its three functions. True when all are bound. A library that lacks a function is
  /// closed again, except when the dynamic loader gave an empty reason: then it stays open.
  bool LoadDotNet(const tov::WideString& path);

 private:
  bool TryVersion(const tov::WideString& version, const tov::WideString& path);
  bool ArePathsValid(const tov::WideString& assembly) const;
  void* InitializeContext(const tov::WideString& assembly, int argc, const char** argv) const;

  tov::WideString productRoot;
  tov::WideString dotnetRootPath;
  tov::WideString dotnetVersionPrefix;
  tov::WideString hostFxrSegment;
  LibraryHandle hostFxrHandle;
  tov::WideString hostFxrPath;
  HostFxrInitializeFn initFn = nullptr;
  HostFxrRunAppFn runAppFn = nullptr;
  HostFxrCloseFn closeFn = nullptr;
};

/// Logs that a function could not be bound, with what the dynamic loader still has to say.
void LogFunctionLoadError(tov::WideString path, tov::WideString functionName);

}  // namespace netloader
