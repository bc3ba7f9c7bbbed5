// Asking a bound host for an application context.
#pragma once

#include <cstdint>

#include "foundation/strings.h"
#include "netloader/netloaderhostfxr/src/hostfxr_api.h"

namespace netloader {

/// What the host answered.
struct HostContext {
  std::int32_t result;  ///< The host's status code.
  void* handle;         ///< The context; null when there is none.
  std::uint32_t error;  ///< errno right after the call.

  /// Only 0 with a handle counts; the host's other success codes do not.
  bool IsUsable() const { return result == 0 && handle != nullptr; }
};

/// Has the host create a context for the assembly, to be run with `argc` arguments. All paths are absolute. Throws
/// `tov::CheckResultFailedException` for a path that has no UTF-8 form, and a pointer to `std::invalid_argument` when
/// arguments are announced and `argv` is null. A handle that comes with another result than 0 is not closed.
HostContext CreateHostContext(HostFxrInitializeFn initialize, const tov::WideString& dotnetRoot,
                              const tov::WideString& hostPath, const tov::WideString& assembly, int argc,
                              const char** argv);

}  // namespace netloader
