// A library of any bytes: it is looked at without harm, and refused with a reason; when it is not refused, everything
// that the dynamic loader would map from it is there.
#include "netloader/netloaderhostfxr/src/elf_check.h"

#include <elf.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "fuzz/support.h"

namespace {

void RequireWhole(const std::uint8_t* data, std::uint64_t size) {
  Elf64_Ehdr header;
  Require(size >= sizeof(header));
  std::memcpy(&header, data, sizeof(header));
  for (std::uint64_t i = 0; i < header.e_phnum; ++i) {
    Elf64_Phdr segment;
    Require(header.e_phoff <= size && (i + 1) * sizeof(segment) <= size - header.e_phoff);
    std::memcpy(&segment, data + header.e_phoff + i * sizeof(segment), sizeof(segment));
    const bool inside = segment.p_offset <= size && segment.p_filesz <= size - segment.p_offset;
    Require(inside || segment.p_type != PT_LOAD || segment.p_filesz == 0);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryFile file;
  file.Write(AsText(data, size));

  const netloader::ElfFinding finding = netloader::CheckElf(file.Path().c_str());

  const bool loadable = finding.verdict == netloader::ElfVerdict::kLoadable;
  Require(loadable == finding.detail.empty());
  if (loadable) {
    RequireWhole(data, size);
  }
  return 0;
}
