// Functions of the C library as old systems have them, for whatever is linked into an executable.
//
// The linker takes the newest version of every function that the building system offers, and the executable then starts
// on no older system. The functions below shadow those that old C libraries have under an older version or another
// name: each is hidden in the executable and passes its call on. No header is included, since the headers declare the
// newest.

#include <exception>

#define HIDDEN [[gnu::visibility("hidden")]]

// The names are the C library's.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

// Dynamic loading, which moved from libdl to libc in 2.34.

__asm__(".symver OldDlopen, dlopen@GLIBC_2.2.5");
__asm__(".symver OldDlsym, dlsym@GLIBC_2.2.5");
__asm__(".symver OldDlerror, dlerror@GLIBC_2.2.5");
__asm__(".symver OldDlclose, dlclose@GLIBC_2.2.5");
void* OldDlopen(const char* file, int mode);
void* OldDlsym(void* library, const char* name);
char* OldDlerror();
int OldDlclose(void* library);

// The initialization of a library may throw, and no function of the C library lets that pass: it ends the process.
// Called here, terminate() is that of the executable and knows the exception whichever C++ library threw it.
HIDDEN void* dlopen(const char* file, int mode) {
  try {
    return OldDlopen(file, mode);
  } catch (...) {
    std::terminate();
  }
}

HIDDEN void* dlsym(void* library, const char* name) {
  return OldDlsym(library, name);
}

HIDDEN char* dlerror() {
  return OldDlerror();
}

HIDDEN int dlclose(void* library) {
  return OldDlclose(library);
}

// File status. Before 2.33 these were functions of the headers, and those of the library took the layout's version.

constexpr int kStatVersion = 1;  // The only layout of x86-64.

__asm__(".symver OldStat, __xstat@GLIBC_2.2.5");
__asm__(".symver OldLstat, __lxstat@GLIBC_2.2.5");
__asm__(".symver OldFstat, __fxstat@GLIBC_2.2.5");
__asm__(".symver OldFstatat, __fxstatat@GLIBC_2.4");
int OldStat(int version, const char* path, void* status);
int OldLstat(int version, const char* path, void* status);
int OldFstat(int version, int descriptor, void* status);
int OldFstatat(int version, int folder, const char* path, void* status, int flags);

HIDDEN int stat(const char* path, void* status) {
  return OldStat(kStatVersion, path, status);
}

HIDDEN int lstat(const char* path, void* status) {
  return OldLstat(kStatVersion, path, status);
}

HIDDEN int fstat(int descriptor, void* status) {
  return OldFstat(kStatVersion, descriptor, status);
}

// By the name that the C++ library in the compiler's archive uses. The layouts are the same on x86-64.
HIDDEN int fstat64(int descriptor, void* status) {
  return OldFstat(kStatVersion, descriptor, status);
}

HIDDEN int fstatat(int folder, const char* path, void* status, int flags) {
  return OldFstatat(kStatVersion, folder, path, status, flags);
}

// From 2.32 on the C library says here whether there is one thread only. Never saying so is always right: references
// are then counted atomically.
HIDDEN extern const char __libc_single_threaded;
const char __libc_single_threaded = 0;

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
