#include "foundation/long_path.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include "foundation/result_code.h"

namespace tov::posix::filesystem::detail::long_path {
namespace {

constexpr std::size_t kLongestName = 4095;
constexpr std::size_t kBufferSize = kLongestName + 1;

}  // namespace

int FileAccessor::Initialize(const char* path) noexcept {
  Clear();
  // Measured no further than it matters: most paths are short, and one may be very long.
  if (::strnlen(path, kBufferSize) <= kLongestName) {
    name_ = path;
    return result_code::kNoError;
  }
  buffer_.reset(new (std::nothrow) char[kBufferSize]);
  if (buffer_ == nullptr) {
    return result_code::kOutOfMemory;
  }
  const int result = WalkTo(path);
  if (result_code::IsFailure(result)) {
    Clear();
  }
  return result;
}

// The name may stand in the buffer, so neither outlives the other.
void FileAccessor::Clear() noexcept {
  name_ = nullptr;
  buffer_.reset();
  folder_ = FileDescriptor(AT_FDCWD);
}

int FileAccessor::WalkTo(const char* path) noexcept {
  int result = result_code::kNoError;
  while (::strnlen(path, kBufferSize) > kLongestName) {
    const std::string_view stretch(path, kBufferSize);
    const std::size_t cut = stretch.rfind('/');  // As much as fits, so that the fewest folders are opened.
    if (cut == std::string_view::npos) {
      return ResultCodeFromSystemError(ENOENT);
    }
    std::memcpy(buffer_.get(), path, cut);
    buffer_[cut] = '\0';
    if (FileDescriptor opened = OpenForReading(folder_.Get(), buffer_.get()); opened.IsOpen()) {
      folder_ = std::move(opened);  // Only now: the new folder was opened relative to the old one.
      result = result_code::kNoError;
      // A failure without an error number is not one; what comes next is then looked for from the same folder.
    } else if (result = ResultCodeFromErrno(); result_code::IsFailure(result)) {
      return result;
    }
    path += cut + 1;
  }
  std::memcpy(buffer_.get(), path, std::strlen(path) + 1);
  name_ = buffer_.get();
  return result;
}

int Stat(const char* path, struct stat& status) noexcept {
  FileAccessor accessor;
  const int result = accessor.Initialize(path);
  if (result_code::IsFailure(result)) {
    return result;
  }
  return ::fstatat(accessor.Descriptor(), accessor.Name(), &status, AT_SYMLINK_NOFOLLOW) == 0 ? result_code::kNoError
                                                                                              : ResultCodeFromErrno();
}

}  // namespace tov::posix::filesystem::detail::long_path
