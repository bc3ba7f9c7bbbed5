// A host resolver that does nothing: what is measured is the way to it.
#include <cstdint>

extern "C" {

std::int32_t hostfxr_initialize_for_dotnet_command_line(int /*argc*/, const char** /*argv*/, const void* /*parameters*/,
                                                        void** handle) {
  static int context;
  *handle = &context;
  return 0;
}

std::int32_t hostfxr_run_app(void* /*handle*/) {
  return 0;
}

std::int32_t hostfxr_close(void* /*handle*/) {
  return 0;
}

// What the official apphost and the `dotnet` command call.
std::int32_t hostfxr_main_startupinfo(int /*argc*/, const char** /*argv*/, const char* /*host*/, const char* /*root*/,
                                      const char* /*application*/) {
  return 0;
}

}  // extern "C"
