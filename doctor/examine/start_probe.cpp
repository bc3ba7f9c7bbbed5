#include "doctor/examine/start_probe.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>

#include "doctor/examine/asked_host.h"
#include "netloader/netloaderhostfxr/src/host_binding.h"
#include "netloader/netloaderhostfxr/src/host_context.h"
#include "netloader/netloaderhostfxr/src/host_library.h"

namespace doctor {
namespace {

// `hostfxr_get_runtime_delegate` of the hosting interface. Asked for a managed function, the host starts the runtime
// first.
using GetDelegate = std::int32_t (*)(void* handle, std::int32_t type, void** delegate);

// hdt_get_function_pointer, and hdt_load_assembly_and_get_function_pointer for hosts that refuse the first. The runtime
// has both functions within itself; nothing of the application is loaded for them.
constexpr std::int32_t kGetFunctionPointer = 6;
constexpr std::int32_t kLoadAssemblyAndGetFunctionPointer = 5;
constexpr auto kDelegates = std::to_array<std::int32_t>({kGetFunctionPointer, kLoadAssemblyAndGetFunctionPointer});

// `get_function_pointer_fn` and `load_assembly_and_get_function_pointer_fn` of the hosting interface: what the two
// delegates are.
using GetPointer = int (*)(const char* type, const char* method, const char* delegateType, void* context,
                           void* reserved, void** pointer);
using LoadAndGetPointer = int (*)(const char* assembly, const char* type, const char* method, const char* delegateType,
                                  void* reserved, void** pointer);

// A class of the runtime itself that has such a method.
constexpr const char* kOwnType = "Internal.Runtime.InteropServices.ComponentActivator, System.Private.CoreLib";
constexpr const char* kOwnMethod = "GetFunctionPointer";

// A runtime may load its compiler no earlier than for the first managed function, and dies there when it cannot. So
// one of its own is called: it finds itself. Which answer it gives is of no importance.
void CallManaged(std::int32_t type, void* delegate) {
  const auto unmanagedCallersOnly = reinterpret_cast<const char*>(-1);  // NOLINT: as the interface has it.
  void* pointer = nullptr;
  if (type == kGetFunctionPointer) {
    reinterpret_cast<GetPointer>(delegate)(kOwnType, kOwnMethod, unmanagedCallersOnly, nullptr, nullptr, &pointer);
  } else {
    reinterpret_cast<LoadAndGetPointer>(delegate)("", kOwnType, kOwnMethod, unmanagedCallersOnly, nullptr, &pointer);
  }
}

// What a host answers that gives no such function for an application: the runtime was not started.
bool IsNotOffered(std::int32_t status) {
  constexpr auto kAnswers = std::to_array<std::uint32_t>({0x80008081, 0x800080a6});
  return std::ranges::find(kAnswers, static_cast<std::uint32_t>(status)) != kAnswers.end();
}

// A runtime that dies writes a dump where it is set up to; a diagnosis leaves no file behind.
void PreventDumps() {
  ::unsetenv("DOTNET_DbgEnableMiniDump");
  ::unsetenv("COMPlus_DbgEnableMiniDump");
}

Answer Tried(std::int32_t result) {
  return {"tried", std::to_string(result), HostWords()};
}

Answer NotTried() {
  return {"", "0", HostWords()};
}

Answer Start(const tov::WideString& path, const tov::WideString& root, const tov::WideString& assembly) {
  PreventDumps();
  std::optional<AskedHost> asked = AskHost(path, root, assembly);
  if (!asked) {
    return kNoHost;
  }
  AskedHost& host = *asked;
  const auto get = reinterpret_cast<GetDelegate>(host.Function("hostfxr_get_runtime_delegate"));
  if (get == nullptr || !host.context.IsUsable()) {
    return NotTried();
  }
  host.binding.library.release();  // The runtime's threads go on until the process ends.
  for (const std::int32_t type : kDelegates) {
    void* delegate = nullptr;
    const std::int32_t result = get(host.context.handle, type, &delegate);
    if (result == 0 && delegate != nullptr) {
      CallManaged(type, delegate);
    }
    if (!IsNotOffered(result)) {
      return Tried(result);
    }
  }
  return NotTried();
}

}  // namespace

StartProbe ProbeStart(const tov::WideString& library, const tov::WideString& dotnetRoot,
                      const tov::WideString& assembly, const Patience& patience) {
  StartProbe probe{RunInChild([&] { return Start(library, dotnetRoot, assembly); }, "the runtime to start", patience)};
  RequireHost(probe.child, library);
  if (probe.child.end == ChildEnd::kFinished) {
    const Answer& answer = probe.child.answer;
    probe.was_tried = !answer.at(0).empty();
    probe.result = std::stoi(answer.at(1));
    probe.host_text = answer.at(2);
  }
  return probe;
}

}  // namespace doctor
