#include "tests/real/installed_product.h"

#include <fstream>
#include <map>
#include <stdexcept>
#include <utility>

#include "tests/support/launcher.h"

namespace tests {

namespace fs = std::filesystem;

Prepared Prepared::Read() {
  std::ifstream file(PREPARED_FILE);
  std::map<std::string, std::string> values;
  for (std::string key, value; std::getline(file, key, '=') && std::getline(file, value);) {
    values[key] = value;
  }
  if (values.empty()) {
    values["missing"] = "Nothing was prepared: the test real_sample has not run.";
  }
  return {values["dotnet"], values["root"], values["host"], values["sample"], values["missing"]};
}

fs::path Prepared::HostFile() const {
  return root / "host" / "fxr" / host / "libhostfxr.so";
}

void RealDotnet::SetUp() {
  if (!prepared_.missing.empty()) {
    GTEST_SKIP() << prepared_.missing;
  }
}

InstalledProduct::InstalledProduct(const Prepared& prepared, const fs::path& root)
    : dotnet_(prepared.dotnet), settings_("DotnetRootFolder=" + root.string() + "\n") {
  if (fs::exists(kProductFolder)) {
    throw std::logic_error("a product is installed here: " + std::string(kProductFolder));
  }
  fs::create_directories(kProductFolder);
  fs::copy(prepared.sample, kProductFolder, fs::copy_options::recursive);
}

InstalledProduct::~InstalledProduct() {
  std::error_code ignored;
  fs::remove_all(kProductFolder, ignored);
}

fs::path InstalledProduct::Assembly() {
  return fs::path(kProductFolder) / "grellin_utils.dll";
}

Command InstalledProduct::Start(std::vector<std::string> arguments) {
  return Launcher().Arguments(std::move(arguments));
}

Command InstalledProduct::StartWithoutLauncher(std::vector<std::string> arguments) const {
  arguments.insert(arguments.begin(), Assembly());
  return Command(dotnet_ / "dotnet").Arguments(std::move(arguments));
}

RealRuntimeTree::RealRuntimeTree(const Prepared& prepared) : host_file_(prepared.HostFile()) {
  fs::create_directory_symlink(prepared.root / "shared", Root() / "shared");
}

RealRuntimeTree& RealRuntimeTree::AddRealHost(std::string_view version) {
  AddFolder(version);
  fs::copy_file(host_file_, HostFile(version));
  return *this;
}

::testing::AssertionResult RanOn(const fs::path& host_file, const Outcome& outcome) {
  const bool ran =
      outcome.status == 0 && outcome.out.find("\nhost \"" + host_file.string() + "\"\n") != std::string::npos;
  return (ran ? ::testing::AssertionSuccess() : ::testing::AssertionFailure()) << host_file << ", " << outcome;
}

}  // namespace tests
