#include "netloader/netloaderhostfxr/src/elf_segments.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace netloader {
namespace {

using ProgramHeaders = std::vector<Elf64_Phdr>;

constexpr std::uint64_t kPageSize = 4096;

// Addresses are added up as the dynamic loader does it, modulo 2^64: a library may be linked at any address, and what
// is written in a damaged header may go around the last one.
std::uint64_t PageStart(std::uint64_t address) {
  return address & ~(kPageSize - 1);
}
std::uint64_t PageEnd(std::uint64_t address) {
  return PageStart(address + kPageSize - 1);
}

ElfFinding Loadable() {
  return {ElfVerdict::kLoadable, {}};
}
ElfFinding Malformed(const char* detail) {
  return {ElfVerdict::kMalformed, detail};
}

// The one range that the dynamic loader reserves, from the page in which the first segment starts to the end of the
// last one. All positions count from its start: only differences of addresses mean anything, the rest is chosen when
// the library is loaded.
class Reservation {
 public:
  explicit Reservation(const ProgramHeaders& loads)
      : base_(PageStart(loads.front().p_vaddr)),
        size_(PageEnd(Position(loads.back().p_vaddr + loads.back().p_memsz))) {}

  // Pages outside would replace something else that is mapped, code of the process for example. Below the first
  // segment positions are huge, since they wrap around.
  bool Holds(const Elf64_Phdr& load) const {
    return FirstPage(load) <= size_ && PagesEnd(load) <= size_ && (!HasZeros(load) || ZerosEnd(load) <= size_);
  }

  // Whether an address stands in pages that come from the file: behind them are zeros, or nothing.
  bool StandsInPagesOf(const Elf64_Phdr& load, std::uint64_t address) const {
    return Position(address) >= FirstPage(load) && Position(address) < PagesEnd(load);
  }

 private:
  // Whether zeros follow the segment's bytes. If they end at a negative position, that is, at the address that the
  // library has in the end, before they start or behind all addresses, the dynamic loader maps none, or refuses the
  // file.
  bool HasZeros(const Elf64_Phdr& load) const {
    return load.p_vaddr + load.p_memsz > load.p_vaddr + load.p_filesz && static_cast<std::int64_t>(ZerosEnd(load)) > 0;
  }

  std::uint64_t Position(std::uint64_t address) const { return address - base_; }
  std::uint64_t FirstPage(const Elf64_Phdr& load) const { return PageStart(Position(load.p_vaddr)); }
  std::uint64_t ZerosEnd(const Elf64_Phdr& load) const { return Position(load.p_vaddr + load.p_memsz); }
  std::uint64_t PagesEnd(const Elf64_Phdr& load) const { return PageEnd(Position(load.p_vaddr + load.p_filesz)); }

  std::uint64_t base_;
  std::uint64_t size_;
};

// A library that goes on behind the last address would load, but none is linked like that: it is a first header that no
// longer describes the contents, and the dynamic loader reads what the others point at from addresses without memory.
bool IsBelow(const Elf64_Phdr& load, const Elf64_Phdr& first) {
  return PageStart(load.p_vaddr) < PageStart(first.p_vaddr);
}

// The dynamic loader compares the addresses themselves: a segment that reaches to the last address or wraps around it
// ends before it starts and is not mapped.
bool IsLeftUnmapped(const Elf64_Phdr& load) {
  return PageEnd(load.p_vaddr + load.p_filesz) < PageStart(load.p_vaddr);
}

// Touching a page of which the file has no byte is a bus error. A segment without bytes of its own that begins inside
// of a page has that page mapped from the file nevertheless, over what was there: its zeros are written into it, and
// the dynamic section, symbols or notes may stand in it.
ElfFinding CheckBytes(const Elf64_Phdr& load, std::uint64_t size) {
  if (load.p_filesz != 0) {
    return CheckRange(load.p_offset, load.p_filesz, size);
  }
  return PageStart(load.p_vaddr) != load.p_vaddr ? CheckRange(PageStart(load.p_offset), 1, size) : Loadable();
}

ElfFinding CheckSegments(const ProgramHeaders& loads, const Reservation& reservation, std::uint64_t size) {
  for (const Elf64_Phdr& load : loads) {
    if (ElfFinding finding = CheckBytes(load, size); finding.verdict != ElfVerdict::kLoadable) {
      return finding;
    }
    if (IsBelow(load, loads.front()) || IsLeftUnmapped(load) || !reservation.Holds(load)) {
      return Malformed("a segment outside the library's own addresses");
    }
  }
  return Loadable();
}

// The dynamic loader reads the dynamic section from memory as soon as the segments are mapped.
ElfFinding CheckDynamicSection(const Elf64_Phdr& dynamic, const ProgramHeaders& loads, const Reservation& reservation) {
  // Pages that two segments share are the later one's.
  const auto home = std::find_if(loads.rbegin(), loads.rend(), [&](const Elf64_Phdr& load) {
    return reservation.StandsInPagesOf(load, dynamic.p_vaddr);
  });
  if (home == loads.rend()) {  // The first read would hit an address without memory, or nothing but zeros.
    return Malformed("a dynamic section outside the loadable segments");
  }
  if ((home->p_flags & (PF_R | PF_W | PF_X)) == 0) {  // The first read is a violation.
    return Malformed("a dynamic section in a segment without any permission");
  }
  // Entries read from between two of them mix up tags and addresses, and the dynamic loader follows wrong pointers.
  if (dynamic.p_vaddr % alignof(Elf64_Dyn) != 0) {
    return Malformed("a dynamic section whose address is not a multiple of 8");
  }
  return Loadable();
}

}  // namespace

ElfFinding CheckRange(std::uint64_t start, std::uint64_t length, std::uint64_t size) {
  const std::uint64_t sum = start + length;
  const std::uint64_t end = sum < start ? UINT64_MAX : sum;  // A sum without a number is beyond any file.
  if (end <= size) {
    return Loadable();
  }
  return {ElfVerdict::kCutShort,
          "cut short: needs at least " + std::to_string(end) + " bytes, has " + std::to_string(size)};
}

ElfFinding CheckProgramHeaders(const ProgramHeaders& headers, std::uint64_t size) {
  ProgramHeaders loads;
  std::ranges::copy_if(headers, std::back_inserter(loads), [](const auto& each) { return each.p_type == PT_LOAD; });
  if (loads.empty()) {
    return Loadable();  // Nothing would be mapped; the dynamic loader reports it.
  }
  const Reservation reservation(loads);
  if (ElfFinding finding = CheckSegments(loads, reservation, size); finding.verdict != ElfVerdict::kLoadable) {
    return finding;
  }
  // Of several the dynamic loader takes the last.
  const auto dynamic =
      std::find_if(headers.rbegin(), headers.rend(), [](const auto& each) { return each.p_type == PT_DYNAMIC; });
  return dynamic != headers.rend() ? CheckDynamicSection(*dynamic, loads, reservation) : Loadable();
}

}  // namespace netloader
