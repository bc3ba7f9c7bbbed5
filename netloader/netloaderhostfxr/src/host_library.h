// The dynamic loader, and what it says of a host library.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "foundation/strings.h"

namespace netloader {

/// Owns one loaded library; closes it when destroyed or reset.
class LibraryHandle {
 public:
  LibraryHandle() noexcept = default;
  LibraryHandle(const LibraryHandle&) = delete;
  LibraryHandle& operator=(const LibraryHandle&) = delete;
  ~LibraryHandle();

  void* get() const noexcept { return handle_; }
  /// Closes the library if there is one; holds nothing afterwards.
  void reset() noexcept;
  /// Takes a library over without closing the one held before.
  void overwrite(void* handle) noexcept { handle_ = handle; }

 private:
  void* handle_ = nullptr;
};

/// The functions that a host must have, in the order in which they are looked up.
inline constexpr auto kHostFunctions = std::to_array<const char*>({
    "hostfxr_initialize_for_dotnet_command_line",
    "hostfxr_run_app",
    "hostfxr_close",
});

/// A library that was opened, or why it was not.
struct OpenedLibrary {
  void* handle;       ///< To be closed by the caller; null on failure.
  std::string error;  ///< The reason, at most 255 bytes; empty on success.
};

/// Opens a library with every symbol bound now. Refused before the dynamic loader sees it is a file that is not a whole
/// shared object for this machine (see elf_check.h), and one whose path means another file to the dynamic loader (see
/// string_token.h).
OpenedLibrary OpenLibrary(const tov::WideString& path);

/// A function that was looked up, or why it was not found.
struct ResolvedFunction {
  void* address;      ///< Null when it was not found.
  std::string error;  ///< The reason, at most 255 bytes; empty when it was found.
};

ResolvedFunction ResolveFunction(void* library, const char* name);

/// At most 255 bytes of a message about the file at `path` (UTF-8). A longer one keeps its end, with the file's folder
/// shortened to "<path>" everywhere; about a path of 6 bytes or fewer it keeps its beginning.
std::string BoundedErrorText(std::string text, std::string_view path);

}  // namespace netloader
