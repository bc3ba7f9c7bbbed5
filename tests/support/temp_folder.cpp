#include "tests/support/temp_folder.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

namespace tests {

namespace fs = std::filesystem;

TempFolder::TempFolder() : TempFolder(fs::temp_directory_path()) {}

TempFolder::TempFolder(const fs::path& parent) {
  std::string name = parent / "test-XXXXXX";
  if (::mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), "mkdtemp " + name);
  }
  path_ = name;
}

TempFolder::~TempFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

void WriteFile(const fs::path& file, std::string_view bytes) {
  fs::create_directories(file.parent_path());
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  stream.close();
  if (!stream) {
    throw std::system_error(errno, std::generic_category(), "write " + file.string());
  }
}

std::string ReadFile(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) {
    throw std::system_error(errno, std::generic_category(), "read " + file.string());
  }
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace tests
