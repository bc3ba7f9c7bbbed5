#include "doctor/examine/probe.h"

#include <dlfcn.h>

#include "launcher/product/product.h"
#include "netloader/netloaderhostfxr/src/host_binding.h"
#include "netloader/netloaderhostfxr/src/host_context.h"
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
  ApplyLaunchEnvironment();
  BindingReason unused;
  netloader::HostBinding host = netloader::BindHost(path, unused);
  ListenToHost(host.library.get());
  const netloader::HostContext context =
      netloader::CreateHostContext(host.functions.initialize, root, path, assembly, 0, nullptr);
  if (context.IsUsable()) {
    host.functions.close(context.handle);
    host.library.release();
  }  // Else the library is closed, as a launch does, without closing what there may be of a context.
  return {std::to_string(context.result), context.handle != nullptr ? "handle" : "", std::to_string(context.error),
          HostText()};
}

}  // namespace

void ApplyLaunchEnvironment() {
  netloader::platform_utils::ApplyRuntimeEnvironment(launcher::RuntimeEnvironment());
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
