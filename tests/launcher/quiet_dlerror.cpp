// Preloaded, takes the place of a dynamic loader whose error texts may be empty where others give none.
#include <dlfcn.h>

extern "C" char* dlerror() {
  static const auto real = reinterpret_cast<char* (*)()>(::dlsym(RTLD_NEXT, "dlerror"));
  static char nothing[] = "";
  char* const error = real();
  return error != nullptr ? error : nothing;
}
