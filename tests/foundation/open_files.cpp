#include "tests/foundation/open_files.h"

#include <filesystem>
#include <iterator>

namespace tests {

std::size_t OpenFiles() {
  const std::filesystem::directory_iterator files("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

}  // namespace tests
