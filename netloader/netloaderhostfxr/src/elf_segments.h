// What the dynamic loader would do with the program headers of a library.
#pragma once

#include <elf.h>

#include <cstdint>
#include <vector>

#include "netloader/netloaderhostfxr/src/elf_check.h"

namespace netloader {

/// Finds what in the program headers of a file of `size` bytes would end the process that loads it. The verdict is
/// loadable, cut short or malformed.
ElfFinding CheckProgramHeaders(const std::vector<Elf64_Phdr>& headers, std::uint64_t size);

/// Loadable when a file of `size` bytes holds the `length` bytes from `start` on, else cut short.
ElfFinding CheckRange(std::uint64_t start, std::uint64_t length, std::uint64_t size);

}  // namespace netloader
