#include "netloader/netloaderhostfxr/src/library_module.h"

namespace netloader {

LibraryInterface::~LibraryInterface() = default;

LoaderModuleInterface::~LoaderModuleInterface() = default;

LibraryModule::LibraryModule(const std::shared_ptr<LoaderModuleInterface>& loader, void* handle, int (*run)(void*),
                             int (*close)(void*))
    : loader_(loader), handle_(handle), run_(run), close_(close) {}

LibraryModule::~LibraryModule() = default;

int LibraryModule::Run() {
  run_(handle_);  // Its result is the application's own affair.
  return close_(handle_);
}

}  // namespace netloader
