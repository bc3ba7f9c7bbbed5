// What a C++ library inside of an executable takes from the C library's part for threads, as old systems have it.
// Passed on as in old_c_library.cpp; in a file of its own, since it brings that part into the process.

extern "C" {

__asm__(".symver OldPthreadOnce, pthread_once@GLIBC_2.2.5");
int OldPthreadOnce(int* once, void (*initialize)());

[[gnu::visibility("hidden")]] int pthread_once(int* once, void (*initialize)()) {
  return OldPthreadOnce(once, initialize);
}

}  // extern "C"
