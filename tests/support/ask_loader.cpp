// Opens the library that its argument names as a launcher would, and reports by its exit status whether that went well.
#include "tests/support/ask_loader.h"

#include <dlfcn.h>
#include <unistd.h>

int main(int, char** argv) {
  ::_exit(::dlopen(argv[1], RTLD_NOW) != nullptr ? tests::kAskLoaderLoads : tests::kAskLoaderRefuses);
}
