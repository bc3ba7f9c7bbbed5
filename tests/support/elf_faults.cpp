#include "tests/support/elf_faults.h"

namespace tests {

std::vector<std::uint64_t> HostileValues(std::size_t fileSize) {
  return {0,
          1,
          2,
          3,
          fileSize,
          fileSize + 1,
          0x7fff,
          0x8000,
          0xffff,
          0x7fffffff,
          0x80000000,
          0xffffffff,
          0x100000000,
          0x7fffffffffffffff,
          0x8000000000000000,
          0xfffffffffffff000,
          0xffffffffffffffff};
}

std::set<std::size_t> CutLengths(const ElfImage& library) {
  const std::size_t size = library.Bytes().size();
  std::set<std::size_t> lengths;
  for (const std::size_t boundary : library.Boundaries()) {
    lengths.insert({boundary == 0 ? 0 : boundary - 1, boundary, boundary + 1});
  }
  for (std::size_t i = 0; i < 200; ++i) {
    lengths.insert(size * i / 200);
  }
  lengths.erase(lengths.upper_bound(size), lengths.end());
  return lengths;
}

}  // namespace tests
