#include "tests/netloader/netloaderquorcommon/src/kept_logger.h"

namespace tests {

// What the linker calls in place of netloader::logger::InitEmptyLogger().
void KeepTheLogger() __asm__("__wrap__ZN9netloader6logger15InitEmptyLoggerEv");

namespace {
int calls = 0;
}

void KeepTheLogger() {
  ++calls;
}

int EmptyLoggersInstalled() {
  return calls;
}

}  // namespace tests
