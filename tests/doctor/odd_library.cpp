// A library that does one thing while it is loaded. Which one is defined where it is built.
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace {

__attribute__((constructor)) void Loaded() {
#if defined(SEGMENTATION_FAULT)
  ::raise(SIGSEGV);
#elif defined(BUS_ERROR)
  ::raise(SIGBUS);
#elif defined(THROWS)
  throw std::runtime_error("no mood to be loaded");
#elif defined(THROWS_NUMBER)
  throw 42;
#elif defined(EXITS)
  ::_exit(17);
#elif defined(HANGS)
  for (;;) {
    ::pause();
  }
#elif defined(TALKS)
  std::puts("words of a library");
  std::fflush(stdout);
#endif
}

}  // namespace
