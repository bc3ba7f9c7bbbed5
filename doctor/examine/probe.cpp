#include "doctor/examine/probe.h"

#include <dlfcn.h>

#include "launcher/product/product.h"
#include "netloader/netloaderhostfxr/src/host_context.h"
#include "netloader/netloaderhostfxr/src/host_library.h"
#include "netloader/platform/environment.h"

namespace doctor {
namespace {

// `hostfxr_set_error_writer` of the hosting interface.
using ErrorWriter = void (*)(const char* message);
using SetErrorWriter = ErrorWriter (*)(ErrorWriter writer);

// The writer has no context of its own; the process that fills this lives for one probe.
std::string& HostText() {
  static std::string text;
  return text;
}

void WriteHostText(const char* message) {
  HostText().append(message).append("\n");
}

void ListenToHost(void* library) {
  if (void* setter = ::dlsym(library, "hostfxr_set_error_writer")) {
    reinterpret_cast<SetErrorWriter>(setter)(WriteHostText);
  }
}

template <typename Function>
Function Bound(void* library, const char* name) {
  return reinterpret_cast<Function>(netloader::ResolveFunction(library, name).address);
}

Answer LoadLibrary(const tov::WideString& path) {
  ApplyLaunchEnvironment();
  const netloader::OpenedLibrary opened = netloader::OpenLibrary(path);
  if (!opened.error.empty()) {
    return {opened.error, {}};
  }
  std::string null;
  for (const char* name : netloader::kHostFunctions) {
    auto function = netloader::ResolveFunction(opened.handle, name);
    if (!function.error.empty()) {
      ::dlclose(opened.handle);  // As a launch does, which a library may not survive either.
      return {std::move(function.error), name};
    }
    if (function.address == nullptr) {
      null = name;
    }
  }
  return {null.empty() ? std::string() : "a null pointer", null};
}

Answer CreateContext(const tov::WideString& path, const tov::WideString& root, const tov::WideString& assembly) {
  ApplyLaunchEnvironment();
  void* library = netloader::OpenLibrary(path).handle;
  ListenToHost(library);
  const auto initialize = Bound<netloader::HostFxrInitializeFn>(library, netloader::kHostFunctions[0]);
  const auto close = Bound<netloader::HostFxrCloseFn>(library, netloader::kHostFunctions[2]);
  const netloader::HostContext context = netloader::CreateHostContext(initialize, root, path, assembly, 0, nullptr);
  if (context.IsUsable()) {
    close(context.handle);
  } else {
    ::dlclose(library);  // As a launch does, without closing what there may be of a context.
  }
  return {std::to_string(context.result), context.handle != nullptr ? "handle" : "", std::to_string(context.error),
          HostText()};
}

}  // namespace

void ApplyLaunchEnvironment() {
  netloader::platform_utils::ConfigureStaticEnvironmentsVariables();
  for (const auto& [name, value] : launcher::RuntimeEnvironment()) {
    netloader::platform_utils::SetEnvVariable(name, value);
  }
}

LibraryProbe ProbeLibrary(const tov::WideString& path, std::chrono::milliseconds limit) {
  LibraryProbe probe{RunInChild([&] { return LoadLibrary(path); }, limit)};
  if (probe.child.end == ChildEnd::kFinished) {
    probe.error = probe.child.answer.at(0);
    probe.missing = probe.child.answer.at(1);
  }
  return probe;
}

ContextProbe ProbeContext(const tov::WideString& library, const tov::WideString& dotnetRoot,
                          const tov::WideString& assembly, std::chrono::milliseconds limit) {
  ContextProbe probe{RunInChild([&] { return CreateContext(library, dotnetRoot, assembly); }, limit)};
  if (probe.child.end == ChildEnd::kFinished) {
    const Answer& answer = probe.child.answer;
    probe.result = std::stoi(answer.at(0));
    probe.has_handle = !answer.at(1).empty();
    probe.error = static_cast<std::uint32_t>(std::stoul(answer.at(2)));
    probe.host_text = answer.at(3);
  }
  return probe;
}

}  // namespace doctor
