// An application context that hostfxr has initialised.
#pragma once

#include <memory>

#include "netloader/netloaderhostfxr/src/library_interface.h"

namespace netloader {

/// Keeps its loader, and so the host library, loaded for as long as it lives.
class LibraryModule : public LibraryInterface {
 public:
  /// `handle` is the context; `run` and `close` are the host's functions for it.
  LibraryModule(const std::shared_ptr<LoaderModuleInterface>& loader, void* handle, int (*run)(void*),
                int (*close)(void*));
  /// Does not close the context: only `Run` does.
  ~LibraryModule() override;

  int Run() override;

 private:
  std::shared_ptr<LoaderModuleInterface> loader_;
  void* handle_;
  int (*run_)(void*);
  int (*close_)(void*);
};

}  // namespace netloader
