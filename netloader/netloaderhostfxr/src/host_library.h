// The dynamic loader, and what it says of a host library.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "foundation/strings.h"

namespace netloader {

/// Owns one loaded library; closes it when destroyed or reset. Destroyed by an exception on its way up, it leaves the
/// library open: the exception may be of one of the library's own classes, and its text be asked for later.
class LibraryHandle {
 public:
  LibraryHandle() noexcept = default;
  explicit LibraryHandle(void* handle) noexcept : handle_(handle) {}
  LibraryHandle(LibraryHandle&& other) noexcept : handle_(other.release()) {}
  LibraryHandle& operator=(LibraryHandle&&) = delete;
  ~LibraryHandle();

  void* get() const noexcept { return handle_; }
  /// Closes the library if there is one; holds nothing afterwards.
  void reset() noexcept;
  /// Gives the library up without closing it.
  void* release() noexcept { return std::exchange(handle_, nullptr); }
  /// Takes over what `other` holds. The library held before, if any, is not closed: nobody owns it from here on.
  void overwrite(LibraryHandle other) noexcept { handle_ = other.release(); }

 private:
  void* handle_ = nullptr;
};

/// A library that was opened, or why it was not.
struct OpenedLibrary {
  LibraryHandle library;  ///< Holds nothing on failure.
  std::string error;      ///< The reason, at most 255 bytes; empty on success.
};

/// Opens a library with every symbol bound now. What `CheckLibrary` refuses is not shown to the dynamic
/// loader.
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
