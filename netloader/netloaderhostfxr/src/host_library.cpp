#include "netloader/netloaderhostfxr/src/host_library.h"

#include <dlfcn.h>

#include <exception>
#include <utility>

#include "foundation/convert_to_container.h"
#include "foundation/result_code.h"
#include "netloader/netloaderhostfxr/src/library_check.h"

namespace netloader {
namespace {

constexpr std::size_t kLongestErrorText = 255;
constexpr std::string_view kShortFolder = "<path>";

std::string DynamicLoaderError() {
  const char* error = ::dlerror();
  return error != nullptr ? error : "dlerror returned nullptr";
}

std::string WithShortFolder(std::string text, std::string_view folder) {
  for (auto at = text.find(folder); at != std::string::npos; at = text.find(folder, at + kShortFolder.size())) {
    text.replace(at, folder.size(), kShortFolder);
  }
  return text;
}

}  // namespace

LibraryHandle::~LibraryHandle() {
  if (std::uncaught_exceptions() == 0) {
    reset();
  }
}

void LibraryHandle::reset() noexcept {
  if (void* handle = release()) {
    ::dlclose(handle);
  }
}

std::string BoundedErrorText(std::string text, std::string_view path) {
  if (text.size() <= kLongestErrorText) {
    return text;
  }
  if (path.size() <= kShortFolder.size()) {
    text.resize(kLongestErrorText);
    return text;
  }
  const std::string_view folder = path.substr(0, path.rfind('/'));
  if (!folder.empty()) {
    text = WithShortFolder(std::move(text), folder);
  }
  return text.size() <= kLongestErrorText ? text : text.substr(text.size() - kLongestErrorText);
}

OpenedLibrary OpenLibrary(const tov::WideString& path) {
  tov::NarrowString file;
  if (tov::result_code::IsFailure(tov::text::Utf16ToUtf8::Do(path, file, 0))) {
    return {{}, "can't convert fileName"};
  }
  if (const std::string reason = CheckLibrary(file).detail; !reason.empty()) {
    static_cast<void>(::dlerror());  // As after a failed opening, nothing older is left to be asked for.
    return {{}, BoundedErrorText(file + ": " + reason, file)};
  }
  // Bound now, so that a library that lacks a symbol fails here, where the next version can still be tried.
  if (void* handle = ::dlopen(file.c_str(), RTLD_NOW)) {
    return {LibraryHandle(handle), {}};
  }
  return {{}, BoundedErrorText(DynamicLoaderError(), file)};
}

ResolvedFunction ResolveFunction(void* library, const char* name) {
  void* address = ::dlsym(library, name);
  return {address, address != nullptr ? std::string() : BoundedErrorText(DynamicLoaderError(), {})};
}

}  // namespace netloader
