// dladdr as C libraries before 2.34 have it, for the libraries that are loaded on old systems.

extern "C" {

__asm__(".symver OldDladdr, dladdr@GLIBC_2.2.5");
int OldDladdr(const void* address, void* information);

[[gnu::visibility("hidden")]] int dladdr(const void* address, void* information) {
  return OldDladdr(address, information);
}

}  // extern "C"
