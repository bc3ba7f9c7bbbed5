// The start of an executable as old C libraries have it, passed on as in old_c_library.cpp.
//
// From 2.34 on the C library runs the executable's initialization when it is given no function that does. Older ones
// know only such a function, and the newer ones still call it.

#define HIDDEN [[gnu::visibility("hidden")]]

// The names are the C library's.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

using Main = int (*)(int, char**, char**);
using Initializer = void (*)(int, char**, char**);
using Finalizer = void (*)();

__asm__(".symver OldStart, __libc_start_main@GLIBC_2.2.5");
int OldStart(Main main, int argc, char** argv, Initializer init, Finalizer fini, Finalizer loader_fini, void* stack);

HIDDEN void _init();
HIDDEN extern const Initializer __init_array_start[];
HIDDEN extern const Initializer __init_array_end[];

static void Initialize(int argc, char** argv, char** environment) {
  _init();
  for (const Initializer* initializer = __init_array_start; initializer != __init_array_end; ++initializer) {
    (*initializer)(argc, argv, environment);
  }
}

// What runs at the end is the dynamic loader's work in all of them.
HIDDEN int __libc_start_main(Main main, int argc, char** argv, Initializer /*init*/, Finalizer fini,
                             Finalizer loader_fini, void* stack) {
  return OldStart(main, argc, argv, Initialize, fini, loader_fini, stack);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
