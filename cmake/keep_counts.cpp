// Keeps what gcov has counted in a process that ends without returning from main: by itself, gcov writes nothing then.
#include <csignal>

extern "C" {

void __gcov_dump();
void __gcov_reset();
[[noreturn]] void __real__exit(int status);

// Every `_exit` of the executable is this one: the linker is told so by --wrap=_exit.
[[noreturn]] void __wrap__exit(int status) {
  __gcov_dump();
  __gcov_reset();  // What vfork() made shares the counts with its parent, which counts on.
  __real__exit(status);
}
}

namespace {

// When this returns, abort() ends the process as it would have done.
void KeepCounts(int /*signal*/) {
  __gcov_dump();
}

[[gnu::constructor]] void KeepCountsWhenAborted() {
  std::signal(SIGABRT, KeepCounts);
}

}  // namespace
