// What can be wrong with a shared library's headers, as tables to try one by one.
#pragma once

#include <elf.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

#include "tests/support/elf_image.h"

namespace tests {

/// A field of the ELF header or of a program header.
struct ElfField {
  const char* name;
  std::size_t offset;
  std::size_t width;
};

inline constexpr auto kElfHeaderFields = std::to_array<ElfField>({
    {"first magic byte", EI_MAG0, 1},
    {"last magic byte", EI_MAG3, 1},
    {"class", EI_CLASS, 1},
    {"data", EI_DATA, 1},
    {"version byte", EI_VERSION, 1},
    {"osabi", EI_OSABI, 1},
    {"abi version", EI_ABIVERSION, 1},
    {"padding", EI_PAD, 1},
    {"e_type", offsetof(Elf64_Ehdr, e_type), 2},
    {"e_machine", offsetof(Elf64_Ehdr, e_machine), 2},
    {"e_version", offsetof(Elf64_Ehdr, e_version), 4},
    {"e_entry", offsetof(Elf64_Ehdr, e_entry), 8},
    {"e_phoff", offsetof(Elf64_Ehdr, e_phoff), 8},
    {"e_shoff", offsetof(Elf64_Ehdr, e_shoff), 8},
    {"e_flags", offsetof(Elf64_Ehdr, e_flags), 4},
    {"e_ehsize", offsetof(Elf64_Ehdr, e_ehsize), 2},
    {"e_phentsize", offsetof(Elf64_Ehdr, e_phentsize), 2},
    {"e_phnum", offsetof(Elf64_Ehdr, e_phnum), 2},
    {"e_shentsize", offsetof(Elf64_Ehdr, e_shentsize), 2},
    {"e_shnum", offsetof(Elf64_Ehdr, e_shnum), 2},
    {"e_shstrndx", offsetof(Elf64_Ehdr, e_shstrndx), 2},
});

/// Of a program header: those that say where and what a segment is, then the others.
inline constexpr auto kSegmentFields = std::to_array<ElfField>({
    {"p_offset", offsetof(Elf64_Phdr, p_offset), 8},
    {"p_filesz", offsetof(Elf64_Phdr, p_filesz), 8},
    {"p_memsz", offsetof(Elf64_Phdr, p_memsz), 8},
    {"p_vaddr", offsetof(Elf64_Phdr, p_vaddr), 8},
    {"p_align", offsetof(Elf64_Phdr, p_align), 8},
    {"p_type", offsetof(Elf64_Phdr, p_type), 4},
});
inline constexpr auto kOtherSegmentFields = std::to_array<ElfField>({
    {"p_flags", offsetof(Elf64_Phdr, p_flags), 4},
    {"p_paddr", offsetof(Elf64_Phdr, p_paddr), 8},
});

/// Small, just beyond the file, around each sign and end of a number, and both ends of 64 bits.
[[nodiscard]] std::vector<std::uint64_t> HostileValues(std::size_t fileSize);

/// Every boundary of the library, one byte to either side of it, and 200 more lengths spread over the file.
[[nodiscard]] std::set<std::size_t> CutLengths(const ElfImage& library);

}  // namespace tests
