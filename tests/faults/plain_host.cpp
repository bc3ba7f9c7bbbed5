// A host that says on standard output what happens to it, a line each, and what descriptors it finds open. It takes no
// memory, so that a launch whose memory fails fails in the launcher.
#include <dlfcn.h>

#include <cstdint>

#include "tests/faults/plain_words.h"

namespace {

using tests::SayPlainly;

struct InitializeParameters {
  std::size_t size;
  const char* host_path;
  const char* dotnet_root;
};

int context = 0;  // Its address is the handle.

// The folder that the library stands in.
std::string_view Version() {
  Dl_info info{};
  if (::dladdr(&context, &info) == 0 || info.dli_fname == nullptr) {
    return "?";
  }
  const std::string_view file = info.dli_fname;
  const std::string_view folder = file.substr(0, file.rfind('/'));
  return folder.substr(folder.rfind('/') + 1);
}

[[gnu::constructor]] void Loaded() {
  SayPlainly(STDOUT_FILENO, {Version(), " loaded"});
}
[[gnu::destructor]] void Unloaded() {
  SayPlainly(STDOUT_FILENO, {Version(), " unloaded"});
  tests::SayWhatIsOpen(STDOUT_FILENO);
}

}  // namespace

extern "C" {

[[gnu::visibility("default")]] std::int32_t hostfxr_initialize_for_dotnet_command_line(
    int argc, const char** argv, const InitializeParameters* parameters, void** handle) {
  SayPlainly(STDOUT_FILENO, {"host ", parameters->host_path});
  SayPlainly(STDOUT_FILENO, {"root ", parameters->dotnet_root});
  for (int i = 0; i < argc; ++i) {
    SayPlainly(STDOUT_FILENO, {"argument ", argv[i]});
  }
  *handle = &context;
  return 0;
}

[[gnu::visibility("default")]] std::int32_t hostfxr_run_app(void* handle) {
  SayPlainly(STDOUT_FILENO, {handle == &context ? "run" : "run with another handle"});
  tests::SayWhatIsOpen(STDOUT_FILENO);
  return 0;
}

[[gnu::visibility("default")]] std::int32_t hostfxr_close(void* handle) {
  SayPlainly(STDOUT_FILENO, {handle == &context ? "close" : "close with another handle"});
  return 0;
}

}  // extern "C"
