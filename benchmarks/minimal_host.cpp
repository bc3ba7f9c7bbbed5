// The least that a C++ host can do: open one known library and make the three calls. The launcher's cost is given
// as a multiple of this one's.
//
//   minimal_host LIBRARY DOTNET_ROOT ASSEMBLY [ARGUMENT...]
#include <dlfcn.h>

#include <cstddef>
#include <iostream>

namespace {

struct Parameters {
  std::size_t size;
  const char* host_path;
  const char* dotnet_root;
};

template <typename Function>
Function Resolve(void* library, const char* name) {
  return reinterpret_cast<Function>(::dlsym(library, name));
}

int Fail(const char* what) {
  std::cerr << "minimal_host: " << what << std::endl;
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    return Fail("a library, a root and an assembly are needed");
  }
  void* library = ::dlopen(argv[1], RTLD_NOW);
  if (library == nullptr) {
    return Fail(::dlerror());
  }
  const auto initialize = Resolve<int (*)(int, const char**, const Parameters*, void**)>(
      library, "hostfxr_initialize_for_dotnet_command_line");
  const auto run = Resolve<int (*)(void*)>(library, "hostfxr_run_app");
  const auto close = Resolve<int (*)(void*)>(library, "hostfxr_close");
  if (initialize == nullptr || run == nullptr || close == nullptr) {
    return Fail("the library lacks a function");
  }
  const Parameters parameters{sizeof(parameters), argv[1], argv[2]};
  void* context = nullptr;
  if (initialize(argc - 3, const_cast<const char**>(argv + 3), &parameters, &context) != 0 || context == nullptr) {
    return Fail("no context");
  }
  run(context);
  const int result = close(context);
  ::dlclose(library);
  return result;
}
