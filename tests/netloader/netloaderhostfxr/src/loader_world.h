// An installed runtime whose hosts record what is done to them, and the log of whoever does it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "netloader/netloaderhostfxr/src/host_fxr_module_parameters.h"
#include "tests/support/captured_log.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/stand_in_host.h"

namespace tests {

using Lines = std::vector<std::string>;

/// `head`, then `tail`.
inline Lines operator+(Lines head, const Lines& tail) {
  head.insert(head.end(), tail.begin(), tail.end());
  return head;
}

/// Everything a loader needs. The environment is put back when it goes.
class LoaderWorld {
 public:
  LoaderWorld() {
    Apply();
    for (const char* name : {"DOTNET_MULTILEVEL_LOOKUP", "COMPlus_GCName", "DOTNET_GCName", "DOTNET_STARTUP_HOOKS"}) {
      environment_.Remove(name);
    }
  }

  /// Makes the hosts of this process obey what `host` was asked for.
  void Apply() {
    for (const auto& [name, value] : host.Environment()) {
      environment_.Set(name, value);
    }
  }

  [[nodiscard]] netloader::HostFxrModuleParameters Parameters() const {
    return {runtime.Root().u16string(), u"6.0.", u"/product", {}};
  }

  /// The path of a version's library, as it is given to the loader and as it stands in the log.
  [[nodiscard]] tov::WideString Wide(std::string_view version) const { return runtime.HostFile(version).u16string(); }
  [[nodiscard]] std::string File(std::string_view version) const { return runtime.HostFile(version); }

  /// What a loader logs when it is made for that root.
  [[nodiscard]] static std::string CreatedLine(const std::string& root) {
    return "TRACE\tLoaderModule: Created with params: dotnetRootPath = '" + root +
           "', dotnetVersionPrefix = '6.0.', productRoot = '/product', hostFxrSegment = 'libhostfxr.so'";
  }
  [[nodiscard]] std::string CreatedLine() const { return CreatedLine(runtime.Root()); }

  /// The folders directly under host/fxr in the order in which the file system lists them.
  [[nodiscard]] Lines Listed() const {
    Lines names;
    for (const auto& entry : std::filesystem::directory_iterator(runtime.FxrFolder())) {
      names.push_back(entry.path().filename());
    }
    return names;
  }

  /// What is logged of one folder that the discovery looks at.
  [[nodiscard]] Lines FoundLines(const std::string& version, bool accepted) const {
    return {"TRACE\tLoaderModule: Loading dotnet processing version file: '" + File(version) + "', version: '" +
                version + "'",
            std::string("TRACE\tLoaderModule: Version candidate is ") + (accepted ? "ok" : "skipped") + ": '" +
                version + "'"};
  }
  [[nodiscard]] std::string AttemptLine(const std::string& version) const {
    return "TRACE\tLoaderModule: Attempt to load fxr file: '" + File(version) + "', version: '" + version + "'";
  }
  /// What is logged of a library that opens and has all its functions.
  [[nodiscard]] static Lines LoadedLines(const std::string& file) {
    return {"TRACE\tLoaderModule: hostfxr library loaded: '" + file + "'",
            "TRACE\tLoaderModule: All function has been obtained successfully from hostfxr library"};
  }
  /// What is logged of a library that does not open. The second line ends after its opening quote.
  [[nodiscard]] static Lines NotOpenedLines(const std::string& file) {
    return {"ERROR\tLoaderModule: Failed to load hostfxr library: '" + file + "'",
            "ERROR\tLoaderModule: Loading hostfxr library completed with error: '"};
  }
  [[nodiscard]] std::string FailedLine(const std::string& version) const {
    return "ERROR\tLoaderModule: Failed to load fxr: '" + File(version) + "'";
  }
  [[nodiscard]] std::string SuccessLine(const std::string& version) const {
    return "TRACE\tLoaderModule: hostfxr file has been successfully loaded: '" + File(version) + "', version: '" +
           version + "'";
  }
  [[nodiscard]] static std::string NothingLoadedLine() {
    return "ERROR\tLoaderModule: Could not load hostfxr. Initialization has been failed.";
  }

  RuntimeTree runtime;
  StandInHost host;
  CapturedLog log;

 private:
  ScopedEnvironment environment_;
};

}  // namespace tests
