#include "tests/doctor/odd_libraries.h"

#include <array>

namespace tests {

std::filesystem::path OddLibrary(Oddity oddity) {
  constexpr std::array kFiles{
      "segmentation_fault.so", "bus_error.so", "throws.so", "throws_number.so", "exits.so", "hangs.so", "talks.so"};
  return std::filesystem::path(ODD_LIBRARIES) / kFiles.at(static_cast<std::size_t>(oddity));
}

}  // namespace tests
