// File status for paths of any length.
#pragma once

#include <sys/stat.h>

#include <memory>

namespace tov::posix::filesystem::detail::long_path {

/// Turns a path of any length into a directory descriptor and a name relative to it that the kernel takes (at most
/// 4095 bytes). A longer path is walked in stretches that end at a "/"; each prefix is opened.
class FileAccessor {
 public:
  FileAccessor() = default;
  FileAccessor(const FileAccessor&) = delete;
  FileAccessor& operator=(const FileAccessor&) = delete;
  /// Closes the descriptor if one was opened.
  ~FileAccessor();

  /// Prepares descriptor and name. `path` must outlive the accessor. Returns 0, "Out of memory", the code of ENOENT for
  /// a stretch without any "/", or that of the failed open.
  int Initialize(const char* path) noexcept;

  /// The folder that `Name()` is relative to; AT_FDCWD for a short path.
  int Descriptor() const noexcept { return descriptor_; }
  const char* Name() const noexcept { return name_; }

 private:
  static constexpr int kCurrentFolder = -100;  // AT_FDCWD

  int WalkTo(const char* path) noexcept;
  void Replace(int descriptor) noexcept;

  const char* name_ = nullptr;
  std::unique_ptr<char[]> buffer_;
  int descriptor_ = kCurrentFolder;
};

/// The status of a file, a final symbolic link not followed. Returns 0 or the failure's result code.
int Stat(const char* path, struct stat& status) noexcept;

}  // namespace tov::posix::filesystem::detail::long_path
