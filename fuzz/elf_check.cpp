// A library of any bytes: it is looked at without harm, and refused with a reason.
#include "netloader/netloaderhostfxr/src/elf_check.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const int file = ::memfd_create("library", 0);
  static const std::string path = "/proc/self/fd/" + std::to_string(file);
  Require(::ftruncate(file, 0) == 0);
  Require(::pwrite(file, data, size, 0) == static_cast<ssize_t>(size));

  const netloader::ElfFinding finding = netloader::CheckElf(path.c_str());

  Require((finding.verdict == netloader::ElfVerdict::kLoadable) == finding.detail.empty());
  Require(finding.verdict != netloader::ElfVerdict::kLoadable || size >= 64);
  return 0;
}
