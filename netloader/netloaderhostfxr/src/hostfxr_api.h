// The part of the public .NET hosting interface that the loader calls. Text is UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>

namespace netloader {

/// `hostfxr_initialize_parameters` of the hosting interface.
struct HostFxrInitializeParameters {
  std::size_t size;         ///< Of this record, in bytes.
  const char* host_path;    ///< The file that hosts the runtime.
  const char* dotnet_root;  ///< The folder of the .NET installation.
};
static_assert(sizeof(HostFxrInitializeParameters) == 24);

/// `hostfxr_initialize_for_dotnet_command_line`: 0 and a handle on success.
using HostFxrInitializeFn = std::int32_t (*)(int argc, const char** argv, const HostFxrInitializeParameters* parameters,
                                             void** handle);
/// `hostfxr_run_app`: runs the application and returns its exit code, or the host's own failure.
using HostFxrRunAppFn = std::int32_t (*)(void* handle);
/// `hostfxr_close`: 0 on success.
using HostFxrCloseFn = std::int32_t (*)(void* handle);

}  // namespace netloader
