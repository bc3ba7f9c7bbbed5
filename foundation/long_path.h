// File status for paths of any length.
#pragma once

#include <fcntl.h>

#include <memory>

#include "foundation/file_descriptor.h"

namespace tov::posix::filesystem::detail::long_path {

/// Turns a path of any length into a directory descriptor and a name relative to it that the kernel takes (at most
/// 4095 bytes). A longer path is walked in stretches that end at a "/"; each prefix is opened.
class FileAccessor {
 public:
  FileAccessor() = default;
  FileAccessor(const FileAccessor&) = delete;
  FileAccessor& operator=(const FileAccessor&) = delete;
  ~FileAccessor() = default;

  /// Prepares descriptor and name. `path` must outlive the accessor. Returns 0, "Out of memory", the code of ENOENT for
  /// a stretch without any "/", or that of the failed open; then no folder is open and there is no name.
  int Initialize(const char* path) noexcept;

  /// The folder that `Name()` is relative to; AT_FDCWD for a short path.
  int Descriptor() const noexcept { return folder_.Get(); }
  /// Null before the first path and after a failure.
  const char* Name() const noexcept { return name_; }

 private:
  int WalkTo(const char* path) noexcept;
  void Clear() noexcept;

  const char* name_ = nullptr;
  std::unique_ptr<char[]> buffer_;
  FileDescriptor folder_{AT_FDCWD};
};

/// The status of a file, a final symbolic link not followed. Returns 0 or the failure's result code.
int Stat(const char* path, struct stat& status) noexcept;

}  // namespace tov::posix::filesystem::detail::long_path
