// What the launch sequence sees of a loader and of a loaded application.
#pragma once

#include <memory>

#include "foundation/strings.h"

namespace netloader {

/// A loaded application. Always held through a shared pointer.
class LibraryInterface {
 public:
  LibraryInterface() = default;
  LibraryInterface(const LibraryInterface&) = delete;
  LibraryInterface& operator=(const LibraryInterface&) = delete;
  virtual ~LibraryInterface();

  /// Runs the application to its end and closes it; to be called once. What it returns is the result of the closing,
  /// never the application's exit code.
  virtual int Run() = 0;
};

/// A loader that has bound a runtime host. Always held through a shared pointer.
class LoaderModuleInterface {
 public:
  LoaderModuleInterface() = default;
  LoaderModuleInterface(const LoaderModuleInterface&) = delete;
  LoaderModuleInterface& operator=(const LoaderModuleInterface&) = delete;
  virtual ~LoaderModuleInterface();

  /// The application in the assembly at `path` (a file name in the product's folder), to be run with `argc` arguments;
  /// empty, with the reason in the log, when it cannot be loaded. The arguments are not copied: they must stay valid
  /// until the application has run.
  virtual std::shared_ptr<LibraryInterface> LoadAssembly(const tov::WideString& path, int argc, const char** argv) = 0;
};

}  // namespace netloader
