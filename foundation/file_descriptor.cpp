#include "foundation/file_descriptor.h"

#include <unistd.h>

#include <cerrno>

namespace tov::posix {

void FileDescriptor::CloseOwned() const noexcept {
  const int error = errno;
  ::close(descriptor_);
  errno = error;
}

}  // namespace tov::posix
