#include "doctor/examine/asked_host.h"

#include <dlfcn.h>

#include <stdexcept>
#include <string_view>

#include "foundation/utf.h"
#include "launcher/product/product.h"
#include "netloader/netloaderhostfxr/src/host_library.h"
#include "netloader/platform/environment.h"

namespace doctor {
namespace {

// `hostfxr_set_error_writer` of the hosting interface.
using ErrorWriter = void (*)(const char* message);
using SetErrorWriter = ErrorWriter (*)(ErrorWriter writer);

// The writer has no context of its own; the process that fills this lives for one probe.
std::string& Words() {
  static std::string words;
  return words;
}

// As much as is kept of what a child writes: a host may have much to say, or never stop.
constexpr std::size_t kLongestWords = std::size_t{64} * 1024;

void WriteWords(const char* message) {
  if (Words().size() < kLongestWords) {
    Words().append(std::string_view(message).substr(0, kLongestWords)).append("\n");
  }
}

void ListenTo(const AskedHost& host) {
  if (void* setter = host.Function("hostfxr_set_error_writer")) {
    reinterpret_cast<SetErrorWriter>(setter)(WriteWords);
  }
}

// Whoever asks a host has seen before that it can be bound.
class Unheard final : public netloader::BindingListener {
 public:
  void LibraryNotOpened(const std::string&) override {}
  void LibraryOpened() override {}
  void FunctionNotFound(const char*, const std::string&) override {}
  void FunctionIsNull(const char*) override {}
  void HostBound() override {}
};

}  // namespace

void* AskedHost::Function(const char* name) const {
  return ::dlsym(binding.library.get(), name);
}

std::optional<AskedHost> AskHost(const tov::WideString& path, const tov::WideString& root,
                                 const tov::WideString& assembly) {
  ApplyLaunchEnvironment();
  Unheard unheard;
  AskedHost host{netloader::BindHost(path, unheard)};
  if (!host.binding.functions.AreComplete()) {
    return std::nullopt;
  }
  ListenTo(host);
  host.context = netloader::CreateHostContext(host.binding.functions.initialize, root, path, assembly, 0, nullptr);
  return host;
}

void RequireHost(const ChildResult& child, const tov::WideString& path) {
  if (child.end == ChildEnd::kFinished && child.answer == kNoHost) {
    throw std::runtime_error(tov::text::ToUtf8(path) + " could be loaded, and cannot be any more");
  }
}

const std::string& HostWords() {
  return Words();
}

void ApplyLaunchEnvironment() {
  netloader::platform_utils::ApplyRuntimeEnvironment(launcher::RuntimeEnvironment());
}

}  // namespace doctor
