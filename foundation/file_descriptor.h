// The one owner of an open file descriptor.
#pragma once

#include <utility>

namespace tov::posix {

/// Owns one descriptor and closes it when destroyed. Move-only. A negative number, such as that of a failed open or
/// AT_FDCWD, owns nothing; it is kept as it is and never closed.
class FileDescriptor {
 public:
  FileDescriptor() noexcept = default;
  /// Takes the descriptor over.
  explicit FileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(other.Release()) {}
  /// Closes what it held before.
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    FileDescriptor taken(std::move(other));
    std::swap(descriptor_, taken.descriptor_);
    return *this;
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  /// Leaves `errno` alone, so that the reason of an earlier failure can still be read.
  ~FileDescriptor() {
    if (IsOpen()) {
      CloseOwned();
    }
  }

  bool IsOpen() const noexcept { return descriptor_ >= 0; }
  int Get() const noexcept { return descriptor_; }

  /// Hands the descriptor to a new owner; what is left owns nothing.
  [[nodiscard]] int Release() noexcept { return std::exchange(descriptor_, kNone); }

  void Close() noexcept { *this = FileDescriptor(); }

 private:
  static constexpr int kNone = -1;

  void CloseOwned() const noexcept;

  int descriptor_ = kNone;
};

/// Opens a file or folder for reading. `path` is relative to `folder`, AT_FDCWD for the current one. Never waits: a
/// plain opening of a fifo would, until somebody writes to it. Not open, with the reason in `errno`, when it fails.
[[nodiscard]] FileDescriptor OpenForReading(int folder, const char* path) noexcept;

}  // namespace tov::posix
