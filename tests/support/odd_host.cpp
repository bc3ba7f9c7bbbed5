#include "tests/support/odd_host.h"

namespace tests {

std::filesystem::path OddHost(std::string_view variant) {
  return std::filesystem::path(ODD_HOST_FOLDER) / variant / "libhostfxr.so";
}

}  // namespace tests
