#include "tests/support/temp_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

namespace tests {

namespace fs = std::filesystem;

namespace {

bool WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0) {
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

// What is longer is cut afterwards: some file systems write a file that is emptied first to the disk at once, and some
// tests replace one hundreds of times.
bool Replace(int descriptor, std::string_view bytes) {
  struct stat status {};
  const auto size = static_cast<off_t>(bytes.size());
  return WriteAll(descriptor, bytes) && ::fstat(descriptor, &status) == 0 &&
         (status.st_size <= size || ::ftruncate(descriptor, size) == 0);
}

}  // namespace

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
  const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
  const int error = descriptor < 0 || !Replace(descriptor, bytes) ? errno : 0;
  ::close(descriptor);
  if (error != 0) {
    throw std::system_error(error, std::generic_category(), "write " + file.string());
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
