#include "foundation/file_find.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "foundation/long_path.h"
#include "foundation/result_code.h"

namespace tov::posix::filesystem {
namespace {

int ErrorCode(int systemError) {
  return ResultCodeFromSystemError(static_cast<unsigned int>(systemError));
}

}  // namespace

int FileFind::Open(const NarrowString& path) {
  folder_path_ = path.empty() ? NarrowString(".") : path;
  if (const int result = OpenFolder(); result_code::IsFailure(result)) {
    return result;
  }
  const int result = Next();
  if (!HasEntry()) {
    folder_.reset();
    // A success code other than 0 would pass for an entry.
    return result == result_code::kNoError || result == 1 ? result_code::kNotFound : result;
  }
  if (folder_path_.back() != '/') {
    folder_path_ += '/';
  }
  return result_code::kNoError;
}

int FileFind::OpenFolder() {
  detail::long_path::FileAccessor accessor;
  const int result = accessor.Initialize(folder_path_.c_str());
  if (result_code::IsFailure(result)) {
    return result;
  }
  const int descriptor = ::openat(accessor.Descriptor(), accessor.Name(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) {
    return ErrorCode(errno);
  }
  folder_.reset(::fdopendir(descriptor));
  if (folder_ == nullptr) {
    const int error = errno;
    ::close(descriptor);
    return ErrorCode(error);
  }
  return result_code::kNoError;
}

int FileFind::Next() noexcept {
  errno = 0;
  entry_ = ::readdir(folder_.get());
  return HasEntry() ? result_code::kNoError : ErrorCode(errno);
}

}  // namespace tov::posix::filesystem
