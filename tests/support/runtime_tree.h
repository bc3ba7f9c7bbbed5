// An installed runtime, as far as a launcher looks at it.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "tests/support/stand_in_host.h"
#include "tests/support/temp_folder.h"

namespace tests {

/// A runtime's root folder with `host/fxr` in it, removed when destroyed. Every Add function throws when it cannot.
class RuntimeTree {
 public:
  /// Lays the tree out in a folder of its own inside `parent`.
  explicit RuntimeTree(const std::filesystem::path& parent = std::filesystem::temp_directory_path());

  /// Puts a stand-in host into the version's folder.
  RuntimeTree& AddHost(std::string_view version, HostVariant variant = HostVariant::kWhole);
  /// Puts any bytes there in a library's place.
  RuntimeTree& AddHostOfBytes(std::string_view version, std::string_view bytes);
  /// Makes a folder; `name` is relative to `host/fxr`, here and below.
  RuntimeTree& AddFolder(std::string_view name);
  /// Makes a file, with the folders above it.
  RuntimeTree& AddFile(std::string_view name, std::string_view bytes = {});
  /// Makes a symbolic link to `target`, with the folders above it.
  RuntimeTree& AddLink(std::string_view name, const std::filesystem::path& target);

  [[nodiscard]] const std::filesystem::path& Root() const { return folder_.Path(); }
  [[nodiscard]] std::filesystem::path FxrFolder() const { return Root() / "host" / "fxr"; }
  /// The path of a version's library, whether or not there is one.
  [[nodiscard]] std::filesystem::path HostFile(std::string_view version) const;

 private:
  TempFolder folder_;
};

}  // namespace tests
