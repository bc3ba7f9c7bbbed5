#include "foundation/long_path.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <string_view>

#include "foundation/result_code.h"

namespace tov::posix::filesystem::detail::long_path {
namespace {

constexpr std::size_t kLongestName = 4095;
constexpr std::size_t kBufferSize = kLongestName + 1;

int LastError() {
  return ResultCodeFromSystemError(static_cast<unsigned int>(errno));
}

}  // namespace

FileAccessor::~FileAccessor() {
  Replace(kCurrentFolder);
}

void FileAccessor::Replace(int descriptor) noexcept {
  static_assert(kCurrentFolder == AT_FDCWD);
  if (descriptor_ != kCurrentFolder && descriptor_ != -1) {
    ::close(descriptor_);
  }
  descriptor_ = descriptor;
}

int FileAccessor::Initialize(const char* path) noexcept {
  Replace(kCurrentFolder);
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
    buffer_.reset();
  }
  return result;
}

int FileAccessor::WalkTo(const char* path) noexcept {
  int result = result_code::kNoError;
  while (::strnlen(path, kBufferSize) > kLongestName) {
    const std::string_view stretch(path, kBufferSize);
    const std::size_t cut = stretch.rfind('/');
    if (cut == std::string_view::npos) {
      return ResultCodeFromSystemError(ENOENT);
    }
    std::memcpy(buffer_.get(), path, cut);
    buffer_[cut] = '\0';
    const int opened = ::openat(descriptor_, buffer_.get(), O_RDONLY | O_CLOEXEC);
    if (opened >= 0) {
      Replace(opened);
      result = result_code::kNoError;
    } else if (result = LastError(); result_code::IsFailure(result)) {
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
                                                                                              : LastError();
}

}  // namespace tov::posix::filesystem::detail::long_path
