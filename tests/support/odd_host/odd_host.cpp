// A host that misbehaves in one place: CONSTRUCTOR, INITIALIZE or DESTRUCTOR is one of the deeds below.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#ifndef CONSTRUCTOR
#define CONSTRUCTOR Nothing
#endif
#ifndef INITIALIZE
#define INITIALIZE Nothing
#endif
#ifndef DESTRUCTOR
#define DESTRUCTOR Nothing
#endif

namespace {

// Each gives what initialising then returns.
[[maybe_unused]] int Nothing() {
  return 0;
}
[[maybe_unused]] int Refuse() {
  return -1;
}
[[maybe_unused]] int Crash() {
  return ::raise(SIGSEGV);
}
[[maybe_unused]] int BusError() {
  return ::raise(SIGBUS);
}
[[maybe_unused]] int Killed() {
  return ::raise(SIGKILL);
}
[[maybe_unused]] int Abort() {
  std::abort();
}
[[maybe_unused]] int Exit() {
  ::_exit(17);
}
[[maybe_unused]] int ExitWell() {
  std::exit(0);
}
[[maybe_unused]] int ThrowError() {
  throw std::runtime_error("no mood to be loaded");
}
[[maybe_unused]] int ThrowNumber() {
  throw 42;
}
[[maybe_unused]] int Talk() {
  std::puts("words of a library");
  return std::fflush(stdout);
}
[[maybe_unused]] int LeaveFile() {
  return ::close(::open("left-behind", O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
}
[[maybe_unused]] int CloseAll() {
  for (int descriptor = 0; descriptor < 1024; ++descriptor) {
    ::close(descriptor);
  }
  return 0;
}
[[maybe_unused]] int Hang() {
  for (;;) {
    ::pause();
  }
}

__attribute__((constructor)) void Come() {
  CONSTRUCTOR();
}
__attribute__((destructor)) void Go() {
  DESTRUCTOR();
}

int context = 0;

}  // namespace

extern "C" std::int32_t hostfxr_initialize_for_dotnet_command_line(int /*argc*/, const char** /*argv*/,
                                                                   const void* /*parameters*/, void** handle) {
  *handle = &context;
  return INITIALIZE();
}

extern "C" std::int32_t hostfxr_run_app(void* /*handle*/) {
  return 0;
}

#ifndef LACKS_CLOSE
extern "C" std::int32_t hostfxr_close(void* /*handle*/) {
  return 0;
}
#endif
