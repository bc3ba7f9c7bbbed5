#include "netloader/netloaderhostfxr/src/elf_segments.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace netloader {
namespace {

using ProgramHeaders = std::vector<Elf64_Phdr>;

constexpr std::uint64_t kPageSize = 4096;

// The end of a range, or the largest number when it has none.
std::uint64_t End(std::uint64_t start, std::uint64_t size) {
  const std::uint64_t end = start + size;
  return end < start ? UINT64_MAX : end;
}

std::uint64_t PageStart(std::uint64_t address) {
  return address & ~(kPageSize - 1);
}
std::uint64_t PageEnd(std::uint64_t address) {
  return address > UINT64_MAX - kPageSize ? UINT64_MAX : PageStart(address + kPageSize - 1);
}

ElfFinding Loadable() {
  return {ElfVerdict::kLoadable, {}};
}

// Where a segment's zeros end, added up as the dynamic loader does: a sum that wraps around ends before the library,
// and there are no zeros to write then.
std::int64_t MemoryEnd(const Elf64_Phdr& load) {
  return static_cast<std::int64_t>(load.p_vaddr + load.p_memsz);
}

// The dynamic loader maps every segment into one range of addresses, reserved from the first segment's start to the
// last one's end. A segment outside would replace something else that is mapped.
bool IsOutside(const Elf64_Phdr& load, const Elf64_Phdr& first, const Elf64_Phdr& last) {
  if (MemoryEnd(last) < 0 || PageStart(load.p_vaddr) < PageStart(first.p_vaddr)) {
    return true;
  }
  const std::uint64_t limit = PageEnd(static_cast<std::uint64_t>(MemoryEnd(last)));
  return PageEnd(End(load.p_vaddr, load.p_filesz)) > limit || MemoryEnd(load) > static_cast<std::int64_t>(limit);
}

// Touching a page of which the file has no byte is a bus error. A segment without bytes of its own needs none, unless
// it begins inside of a page: its zeros are then written into a page of the file.
ElfFinding CheckBytes(const Elf64_Phdr& load, std::uint64_t size) {
  if (load.p_filesz != 0) {
    return CheckRange(load.p_offset, load.p_filesz, size);
  }
  const bool hasZerosInPage = PageStart(load.p_vaddr) != load.p_vaddr && load.p_vaddr + load.p_memsz > load.p_vaddr;
  return hasZerosInPage ? CheckRange(PageStart(load.p_offset), 1, size) : Loadable();
}

ElfFinding CheckSegments(const ProgramHeaders& loads, std::uint64_t size) {
  for (const Elf64_Phdr& load : loads) {
    if (ElfFinding finding = CheckBytes(load, size); finding.verdict != ElfVerdict::kLoadable) {
      return finding;
    }
    if (IsOutside(load, loads.front(), loads.back())) {
      return {ElfVerdict::kMalformed, "a segment outside the library's own addresses"};
    }
  }
  return Loadable();
}

// The dynamic section is read from memory, so it must stand in pages that come from the file.
ElfFinding CheckDynamicSection(const Elf64_Phdr& dynamic, const ProgramHeaders& loads) {
  const bool mapped = std::ranges::any_of(loads, [&](const Elf64_Phdr& load) {
    return dynamic.p_vaddr >= PageStart(load.p_vaddr) && dynamic.p_vaddr < PageEnd(End(load.p_vaddr, load.p_filesz));
  });
  return mapped ? Loadable() : ElfFinding{ElfVerdict::kMalformed, "a dynamic section outside the loadable segments"};
}

}  // namespace

ElfFinding CheckRange(std::uint64_t start, std::uint64_t length, std::uint64_t size) {
  const std::uint64_t end = End(start, length);
  if (end <= size) {
    return Loadable();
  }
  return {ElfVerdict::kCutShort,
          "cut short: needs at least " + std::to_string(end) + " bytes, has " + std::to_string(size)};
}

ElfFinding CheckProgramHeaders(const ProgramHeaders& headers, std::uint64_t size) {
  ProgramHeaders loads;
  std::ranges::copy_if(headers, std::back_inserter(loads), [](const auto& each) { return each.p_type == PT_LOAD; });
  if (ElfFinding finding = CheckSegments(loads, size); finding.verdict != ElfVerdict::kLoadable) {
    return finding;
  }
  // Of several the dynamic loader takes the last.
  const auto dynamic =
      std::find_if(headers.rbegin(), headers.rend(), [](const auto& each) { return each.p_type == PT_DYNAMIC; });
  return dynamic != headers.rend() ? CheckDynamicSection(*dynamic, loads) : Loadable();
}

}  // namespace netloader
