#include "tests/netloader/netloaderquorcommon/src/interposed_stream.h"

#include <dlfcn.h>
#include <stdio.h>  // NOLINT(modernize-deprecated-headers): fopencookie is the C library's.

#include <cerrno>
#include <optional>
#include <utility>

namespace tests {
namespace {

std::string faulty_path;
std::optional<int> open_error;
std::string text_before;
int read_error = 0;
std::optional<int> lines_left;

template <typename Function>
Function* TheSystems(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

ssize_t Read(void* /*cookie*/, char* buffer, std::size_t size) {
  if (text_before.empty()) {
    errno = read_error;
    return -1;
  }
  const std::size_t length = text_before.copy(buffer, size);
  text_before.erase(0, length);
  return static_cast<ssize_t>(length);
}

}  // namespace

UnopenableFile::UnopenableFile(std::string path, int error) {
  faulty_path = std::move(path);
  open_error = error;
}

UnopenableFile::~UnopenableFile() {
  faulty_path.clear();
  open_error.reset();
}

BrokenFile::BrokenFile(std::string path, std::string text, int error) {
  faulty_path = std::move(path);
  text_before = std::move(text);
  read_error = error;
}

BrokenFile::~BrokenFile() {
  faulty_path.clear();
}

NoMemoryForLine::NoMemoryForLine(int succeeding) {
  lines_left = succeeding;
}

NoMemoryForLine::~NoMemoryForLine() {
  lines_left.reset();
}

}  // namespace tests

extern "C" FILE* fopen(const char* path, const char* mode) {
  if (tests::faulty_path.empty() || tests::faulty_path != path) {
    return tests::TheSystems<FILE*(const char*, const char*)>("fopen")(path, mode);
  }
  if (tests::open_error) {
    errno = *tests::open_error;
    return nullptr;
  }
  return ::fopencookie(nullptr, mode, {tests::Read, nullptr, nullptr, nullptr});
}

extern "C" ssize_t getdelim(char** line, std::size_t* room, int end, FILE* stream) {
  if (tests::lines_left && (*tests::lines_left)-- == 0) {
    errno = ENOMEM;
    return -1;
  }
  return tests::TheSystems<ssize_t(char**, std::size_t*, int, FILE*)>("getdelim")(line, room, end, stream);
}
