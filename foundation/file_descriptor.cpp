#include "foundation/file_descriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace tov::posix {

void FileDescriptor::CloseOwned() const noexcept {
  const int error = errno;
  ::close(descriptor_);
  errno = error;
}

// Closed on exec: a program that the application starts does not inherit what the walk has open.
FileDescriptor OpenForReading(int folder, const char* path) noexcept {
  return FileDescriptor(::openat(folder, path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
}

}  // namespace tov::posix
