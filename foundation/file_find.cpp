#include "foundation/file_find.h"

#include <cerrno>

#include "foundation/file_descriptor.h"
#include "foundation/long_path.h"
#include "foundation/result_code.h"

namespace tov::posix::filesystem {

int FileFind::Open(const NarrowString& path) {
  // Whatever fails below, nothing of a folder that was open before is left behind the new path.
  entry_ = nullptr;
  folder_.reset();
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
  FileDescriptor opened = OpenForReading(accessor.Descriptor(), accessor.Name());
  if (!opened.IsOpen()) {
    return ResultCodeFromErrno();
  }
  folder_.reset(::fdopendir(opened.Get()));
  if (folder_ == nullptr) {
    return ResultCodeFromErrno();
  }
  static_cast<void>(opened.Release());  // The stream closes it from now on.
  return result_code::kNoError;
}

int FileFind::Next() noexcept {
  errno = 0;  // The end and a failure are the same null; only a number set since then shows a failure.
  entry_ = ::readdir(folder_.get());
  return HasEntry() ? result_code::kNoError : ResultCodeFromErrno();
}

}  // namespace tov::posix::filesystem
