#include "doctor/examine/probe.h"

#include <optional>

#include "doctor/examine/asked_host.h"
#include "foundation/utf.h"
#include "netloader/netloaderhostfxr/src/host_binding.h"
#include "netloader/netloaderhostfxr/src/host_context.h"
#include "netloader/netloaderhostfxr/src/host_library.h"

namespace doctor {
namespace {

constexpr const char* kAssemblies = "TRUSTED_PLATFORM_ASSEMBLIES";

// `hostfxr_get_runtime_property_value` of the hosting interface.
using GetProperty = std::int32_t (*)(void* handle, const char* name, const char** value);

// Empty when the host does not say.
std::string AssembliesOf(const AskedHost& host) {
  const auto get = reinterpret_cast<GetProperty>(host.Function("hostfxr_get_runtime_property_value"));
  const char* value = nullptr;
  return get != nullptr && get(host.context.handle, kAssemblies, &value) == 0 && value != nullptr ? value : "";
}

// Keeps why a host could not be bound.
class BindingReason final : public netloader::BindingListener {
 public:
  void LibraryNotOpened(const std::string& error) override { answer_ = {error, {}}; }
  void LibraryOpened() override {}
  void FunctionNotFound(const char* name, const std::string& error) override { answer_ = {error, name}; }
  void FunctionIsNull(const char* name) override { answer_ = {"a null pointer", name}; }
  void HostBound() override {}

  const Answer& Get() const { return answer_; }

 private:
  Answer answer_ = {std::string(), std::string()};
};

Answer LoadLibrary(const tov::WideString& path) {
  ApplyLaunchEnvironment();
  BindingReason reason;
  netloader::HostBinding host = netloader::BindHost(path, reason);
  host.library.release();  // A launch closes it only when the application has run.
  return reason.Get();
}

Answer CreateContext(const tov::WideString& path, const tov::WideString& root, const tov::WideString& assembly) {
  std::optional<AskedHost> asked = AskHost(path, root, assembly);
  if (!asked) {
    return kNoHost;
  }
  AskedHost& host = *asked;
  std::string assemblies;
  if (host.context.IsUsable()) {
    assemblies = AssembliesOf(host);
    host.binding.functions.close(host.context.handle);
    host.binding.library.release();
  }  // Else the library is closed, as a launch does, without closing what there may be of a context.
  return {std::to_string(host.context.result), host.context.handle != nullptr ? "handle" : "",
          std::to_string(host.context.error), HostWords(), assemblies};
}

}  // namespace

LibraryProbe ProbeLibrary(const tov::WideString& path, const Patience& patience) {
  LibraryProbe probe{RunInChild([&] { return LoadLibrary(path); }, tov::text::ToUtf8(path) + " to load", patience)};
  if (probe.child.end == ChildEnd::kFinished) {
    probe.error = probe.child.answer.at(0);
    probe.missing = probe.child.answer.at(1);
  }
  return probe;
}

ContextProbe ProbeContext(const tov::WideString& library, const tov::WideString& dotnetRoot,
                          const tov::WideString& assembly, const Patience& patience) {
  ContextProbe probe{RunInChild([&] { return CreateContext(library, dotnetRoot, assembly); },
                                "the host to prepare the application", patience)};
  RequireHost(probe.child, library);
  if (probe.child.end == ChildEnd::kFinished) {
    const Answer& answer = probe.child.answer;
    probe.result = std::stoi(answer.at(0));
    probe.has_handle = !answer.at(1).empty();
    probe.error = static_cast<std::uint32_t>(std::stoul(answer.at(2)));
    probe.host_text = answer.at(3);
    probe.assemblies = answer.at(4);
  }
  return probe;
}

}  // namespace doctor
