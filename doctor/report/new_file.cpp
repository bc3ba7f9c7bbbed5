#include "doctor/report/new_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "foundation/file_descriptor.h"

namespace doctor {
namespace {

using tov::posix::FileDescriptor;

bool WriteAll(const FileDescriptor& file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(file.Get(), text.data(), text.size());
    if (written < 0 && errno != EINTR) {
      return false;
    }
    text.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
  }
  return ::fsync(file.Get()) == 0;
}

}  // namespace

std::string WriteNewFile(const std::string& path, std::string_view text) {
  const FileDescriptor file(
      ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY, 0600));
  if (!file.IsOpen()) {
    return errno == EEXIST ? "there is such a file already, and it is left alone" : std::strerror(errno);
  }
  return WriteAll(file, text) ? std::string() : std::string("it is not whole: ") + std::strerror(errno);
}

}  // namespace doctor
