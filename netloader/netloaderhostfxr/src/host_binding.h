// From the path of a host library to its three functions.
#pragma once

#include <array>
#include <string>

#include "foundation/strings.h"
#include "netloader/netloaderhostfxr/src/host_library.h"
#include "netloader/netloaderhostfxr/src/hostfxr_api.h"

namespace netloader {

/// The functions that a host must have, in the order in which they are looked up.
inline constexpr auto kHostFunctions = std::to_array<const char*>({
    "hostfxr_initialize_for_dotnet_command_line",
    "hostfxr_run_app",
    "hostfxr_close",
});

/// Their addresses, each null when it was not found or not looked up.
struct HostFunctions {
  HostFxrInitializeFn initialize = nullptr;
  HostFxrRunAppFn run_app = nullptr;
  HostFxrCloseFn close = nullptr;

  bool AreComplete() const { return initialize != nullptr && run_app != nullptr && close != nullptr; }
};

/// Hears of each step of binding a host when it is taken. One of all but `LibraryOpened` is the last step.
class BindingListener {
 public:
  virtual void LibraryNotOpened(const std::string& error) = 0;
  virtual void LibraryOpened() = 0;
  /// The library is still open here, and closed next.
  virtual void FunctionNotFound(const char* name, const std::string& error) = 0;
  /// Every function was found, says the dynamic loader, but at least this one is null.
  virtual void FunctionIsNull(const char* name) = 0;
  virtual void HostBound() = 0;

 protected:
  ~BindingListener() = default;
};

/// A host as far as it could be bound.
struct HostBinding {
  bool is_opened = false;
  LibraryHandle library;    ///< Holds nothing when the library did not open, or was closed for want of a function.
  HostFunctions functions;  ///< Complete only when the host is bound.
};

/// Opens the library and looks its functions up, up to the first that is missing; then closes it again. When none is
/// missing, and yet one is null because the dynamic loader gave an empty reason, the library stays open.
HostBinding BindHost(const tov::WideString& path, BindingListener& listener);

}  // namespace netloader
