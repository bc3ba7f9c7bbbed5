#include "tests/netloader/netloaderhostfxr/src/interposed_calls.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <new>
#include <utility>

extern "C" long syscall(long number, ...) noexcept;

namespace tests {
namespace {

int opens = 0;
int last_open_flags = -1;
int reads = 0;

int read_error = 0;
int reads_before_error = 0;

std::size_t failing_size = 0;

std::function<void(const std::string&)> status_watcher;

std::function<void()> closing_watcher;

std::vector<std::string> loader_errors;
std::size_t next_loader_error = 0;

using LoaderErrorFunction = char* (*)();

LoaderErrorFunction RealLoaderError() {
  static const auto real = reinterpret_cast<LoaderErrorFunction>(::dlsym(RTLD_NEXT, "dlerror"));
  return real;
}

// Looked up before there is an error, which the looking up would forget.
[[maybe_unused]] const LoaderErrorFunction looked_up_early = RealLoaderError();

}  // namespace

int LastOpenFlags() {
  return last_open_flags;
}

CountedReads::CountedReads() {
  opens = 0;
  reads = 0;
}

int CountedReads::Opens() const {
  return opens;
}

int CountedReads::Reads() const {
  return reads;
}

FailingRead::FailingRead(int error, int succeeding) {
  read_error = error;
  reads_before_error = succeeding;
}

FailingRead::~FailingRead() {
  read_error = 0;
}

FailingAllocation::FailingAllocation(std::size_t size) {
  failing_size = size;
}

FailingAllocation::~FailingAllocation() {
  failing_size = 0;
}

WatchedStatus::WatchedStatus(std::function<void(const std::string&)> look) {
  status_watcher = std::move(look);
}

WatchedStatus::~WatchedStatus() {
  status_watcher = nullptr;
}

WatchedClosing::WatchedClosing(std::function<void()> look) {
  closing_watcher = std::move(look);
}

WatchedClosing::~WatchedClosing() {
  closing_watcher = nullptr;
}

ScriptedLoaderErrors::ScriptedLoaderErrors(std::vector<std::string> texts) {
  loader_errors = std::move(texts);
  next_loader_error = 0;
}

ScriptedLoaderErrors::~ScriptedLoaderErrors() {
  loader_errors.clear();
}

}  // namespace tests

extern "C" int open(const char* path, int flags, ...) {
  std::va_list more;
  va_start(more, flags);
  const auto mode = va_arg(more, unsigned int);
  va_end(more);
  ++tests::opens;
  constexpr int kCurrentFolder = -100;
  return static_cast<int>(::syscall(SYS_openat, kCurrentFolder, path, flags, mode));
}

extern "C" ssize_t pread(int descriptor, void* buffer, std::size_t size, off_t offset) {
  ++tests::reads;
  if (tests::read_error != 0 && tests::reads_before_error-- == 0) {
    errno = tests::read_error;
    return -1;
  }
  return ::syscall(SYS_pread64, descriptor, buffer, size, offset);
}

extern "C" void* dlopen(const char* file, int flags) noexcept {
  using Open = void* (*)(const char*, int);
  static const auto real = reinterpret_cast<Open>(::dlsym(RTLD_NEXT, "dlopen"));
  tests::last_open_flags = flags;
  return real(file, flags);
}

extern "C" int fstatat(int folder, const char* path, struct stat* status, int flags) noexcept {
  if (tests::status_watcher) {
    tests::status_watcher(path);
  }
  return static_cast<int>(::syscall(SYS_newfstatat, folder, path, status, flags));
}

extern "C" int dlclose(void* library) noexcept {
  static const auto real = reinterpret_cast<int (*)(void*)>(::dlsym(RTLD_NEXT, "dlclose"));
  if (tests::closing_watcher) {
    tests::closing_watcher();
  }
  return real(library);
}

extern "C" char* dlerror() noexcept {
  if (tests::next_loader_error < tests::loader_errors.size()) {
    return tests::loader_errors[tests::next_loader_error++].data();
  }
  return tests::RealLoaderError()();
}

void* operator new(std::size_t size) {
  void* const memory = size == tests::failing_size ? nullptr : std::malloc(size);
  if (memory == nullptr) {
    tests::failing_size = 0;
    throw std::bad_alloc();
  }
  return memory;
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
