// Keeps what gcov has counted in a process that ends without returning from main, or becomes another program: by
// itself, gcov writes nothing then. Processes of every user add to the same files.
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdarg>

extern "C" {
void __gcov_dump();
void __gcov_reset();
[[noreturn]] void __real__exit(int status);
}

namespace {

// Whoever makes a file of counts lets every other user write it, too.
void Dump() {
  const mode_t before = ::umask(0);
  __gcov_dump();
  ::umask(before);
}

// When this returns, abort() ends the process as it would have done.
void KeepCounts(int /*signal*/) {
  Dump();
}

[[gnu::constructor]] void KeepCountsWhenAborted() {
  std::signal(SIGABRT, KeepCounts);
}

// Just before gcov does it, which then finds nothing left to write.
[[gnu::destructor(101)]] void KeepCountsAtTheEnd() {
  Dump();
}

}  // namespace

// The executable's calls of these functions come here: the linker is told so by --wrap.
extern "C" {

[[noreturn]] void __wrap__exit(int status) {
  Dump();
  __gcov_reset();  // What vfork() made shares the counts with its parent, which counts on.
  __real__exit(status);
}

int __wrap_execl(const char* path, const char* first, ...) {
  constexpr std::size_t kMost = 16;
  std::array<char*, kMost + 1> arguments{const_cast<char*>(first)};
  std::va_list others;
  va_start(others, first);
  for (std::size_t at = 1; at < kMost && arguments[at - 1] != nullptr; ++at) {
    arguments[at] = va_arg(others, char*);
  }
  va_end(others);
  Dump();
  __gcov_reset();  // They would be added again if there is no such program.
  return ::execv(path, arguments.data());
}
}
