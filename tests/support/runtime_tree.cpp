#include "tests/support/runtime_tree.h"

namespace tests {

namespace fs = std::filesystem;

RuntimeTree::RuntimeTree(const fs::path& parent) : folder_(parent) {
  fs::create_directories(FxrFolder());
}

RuntimeTree& RuntimeTree::AddHost(std::string_view version, HostVariant variant) {
  fs::create_directories(FxrFolder() / version);
  fs::copy_file(HostLibrary(variant), HostFile(version), fs::copy_options::overwrite_existing);
  return *this;
}

RuntimeTree& RuntimeTree::AddHostOfBytes(std::string_view version, std::string_view bytes) {
  WriteFile(HostFile(version), bytes);
  return *this;
}

RuntimeTree& RuntimeTree::AddFolder(std::string_view name) {
  fs::create_directories(FxrFolder() / name);
  return *this;
}

RuntimeTree& RuntimeTree::AddFile(std::string_view name, std::string_view bytes) {
  WriteFile(FxrFolder() / name, bytes);
  return *this;
}

RuntimeTree& RuntimeTree::AddLink(std::string_view name, const fs::path& target) {
  const fs::path link = FxrFolder() / name;
  fs::create_directories(link.parent_path());
  fs::create_symlink(target, link);
  return *this;
}

fs::path RuntimeTree::HostFile(std::string_view version) const {
  return FxrFolder() / version / "libhostfxr.so";
}

}  // namespace tests
