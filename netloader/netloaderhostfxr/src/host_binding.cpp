#include "netloader/netloaderhostfxr/src/host_binding.h"

#include <utility>

namespace netloader {
namespace {

// False when the function is missing. A null function without a reason is not missing yet: the others are looked up.
template <typename Function>
bool Find(const LibraryHandle& library, const char* name, Function& function, BindingListener& listener) {
  const ResolvedFunction resolved = ResolveFunction(library.get(), name);
  function = reinterpret_cast<Function>(resolved.address);
  if (!resolved.error.empty()) {
    listener.FunctionNotFound(name, resolved.error);
  }
  return resolved.error.empty();
}

bool FindAll(HostBinding& host, BindingListener& listener) {
  return Find(host.library, kHostFunctions[0], host.functions.initialize, listener) &&
         Find(host.library, kHostFunctions[1], host.functions.run_app, listener) &&
         Find(host.library, kHostFunctions[2], host.functions.close, listener);
}

const char* FirstNull(const HostFunctions& functions) {
  if (functions.initialize == nullptr) {
    return kHostFunctions[0];
  }
  return functions.run_app == nullptr ? kHostFunctions[1] : kHostFunctions[2];
}

}  // namespace

HostBinding BindHost(const tov::WideString& path, BindingListener& listener) {
  OpenedLibrary opened = OpenLibrary(path);
  if (!opened.error.empty()) {
    listener.LibraryNotOpened(opened.error);
    return {};
  }
  listener.LibraryOpened();
  HostBinding host{true, std::move(opened.library), {}};
  if (!FindAll(host, listener)) {
    host.library.reset();
  } else if (!host.functions.AreComplete()) {
    listener.FunctionIsNull(FirstNull(host.functions));
  } else {
    listener.HostBound();
  }
  return host;
}

}  // namespace netloader
