// Preloaded into a process: one allocation of it fails, or all from one on. Variables choose which:
//
//   FAILING_ALLOCATION  the number of the first that fails, counted from 1
//   FAILING_FOR_EVER    set: all that follow fail as well
//   FAILING_REPORT      the file that is made once one has failed: "before main" or "main" (whose first call is that of
//                       setlocale), and the descriptors that are open when the process exits
#include <dlfcn.h>
#include <fcntl.h>
#include <malloc.h>
#include <sys/types.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <limits>

#include "tests/faults/plain_words.h"

// The C library's own, under the names by which it exports them for replacements.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

constexpr long kNever = std::numeric_limits<long>::max();

long successes_left = kNever;
bool for_ever = false;
bool has_failed = false;
bool is_main = false;
const char* report_file = nullptr;
char* (*real_setlocale)(int, const char*) = nullptr;

template <typename Write>
void Report(Write write) {
  const int report = ::open(report_file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  write(report);
  ::close(report);
}

bool Fails() {
  if (successes_left == kNever || --successes_left > 0) {
    return false;
  }
  successes_left = for_ever ? 1 : kNever;
  if (!has_failed) {
    has_failed = true;
    Report([](int report) { tests::SayPlainly(report, {is_main ? "main" : "before main"}); });
  }
  errno = ENOMEM;
  return true;
}

[[gnu::constructor]] void Begin() {
  real_setlocale = reinterpret_cast<decltype(real_setlocale)>(::dlsym(RTLD_NEXT, "setlocale"));
  report_file = std::getenv("FAILING_REPORT");
  for_ever = std::getenv("FAILING_FOR_EVER") != nullptr;
  if (const char* number = std::getenv("FAILING_ALLOCATION")) {
    successes_left = std::atol(number);
  }
}

[[gnu::destructor]] void End() {
  Report(tests::SayWhatIsOpen);
}

}  // namespace

extern "C" {

char* setlocale(int category, const char* locale) noexcept {
  is_main = true;
  return real_setlocale(category, locale);
}

void* malloc(std::size_t size) noexcept {
  return Fails() ? nullptr : __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) noexcept {
  return Fails() ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* memory, std::size_t size) noexcept {
  return Fails() ? nullptr : __libc_realloc(memory, size);
}
void* memalign(std::size_t alignment, std::size_t size) noexcept {
  return Fails() ? nullptr : __libc_memalign(alignment, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
  return memalign(alignment, size);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) noexcept {
  void* const got = memalign(alignment, size);
  if (got == nullptr) {
    return ENOMEM;
  }
  *memory = got;
  return 0;
}

}  // extern "C"
