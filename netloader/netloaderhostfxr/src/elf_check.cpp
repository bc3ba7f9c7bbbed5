#include "netloader/netloaderhostfxr/src/elf_check.h"

#include <elf.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <optional>
#include <vector>

namespace netloader {
namespace {

using ProgramHeaders = std::vector<Elf64_Phdr>;

constexpr std::uint64_t kPageSize = 4096;
// Room for the header and the program headers of nearly every library, so that one read is enough.
constexpr std::size_t kFrontSize = 832;

class FileDescriptor {
 public:
  explicit FileDescriptor(const char* path) : descriptor_(::open(path, O_RDONLY | O_CLOEXEC)) {}
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() {
    if (IsOpen()) {
      ::close(descriptor_);
    }
  }

  bool IsOpen() const { return descriptor_ >= 0; }

  std::uint64_t Size() const {
    struct stat status {};
    return ::fstat(descriptor_, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
  }

  // How many bytes were read; empty when the read failed.
  std::optional<std::size_t> Read(void* buffer, std::size_t size, std::uint64_t offset) const {
    const ssize_t count = ::pread(descriptor_, buffer, size, static_cast<off_t>(offset));
    return count < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(count));
  }

 private:
  int descriptor_;
};

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

ElfFinding CutShort(std::uint64_t needed, std::uint64_t size) {
  return {ElfVerdict::kCutShort,
          "cut short: needs at least " + std::to_string(needed) + " bytes, has " + std::to_string(size)};
}

ElfFinding CheckHeader(const Elf64_Ehdr& header, std::uint64_t size) {
  if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) {
    return {ElfVerdict::kNotElf, "not an ELF file"};
  }
  if (header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_ident[EI_DATA] != ELFDATA2LSB ||
      header.e_machine != EM_X86_64) {
    return {ElfVerdict::kOtherMachine, "built for another machine or word size"};
  }
  if (header.e_type != ET_DYN) {
    return {ElfVerdict::kNotShared, "not a shared object"};
  }
  if (header.e_phentsize != sizeof(Elf64_Phdr)) {
    return {ElfVerdict::kMalformed, "program headers of an unknown size"};
  }
  const std::uint64_t end = End(header.e_phoff, std::uint64_t{header.e_phnum} * sizeof(Elf64_Phdr));
  return end > size ? CutShort(end, size) : Loadable();
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

// How long the file must be for a segment. One without bytes of its own needs none, unless it begins inside of a page:
// its zeros are then written into a page of the file, of which at least one byte must be there.
std::uint64_t FileEnd(const Elf64_Phdr& load) {
  if (load.p_filesz != 0) {
    return End(load.p_offset, load.p_filesz);
  }
  const bool hasZerosInPage = PageStart(load.p_vaddr) != load.p_vaddr && load.p_vaddr + load.p_memsz > load.p_vaddr;
  return hasZerosInPage ? End(PageStart(load.p_offset), 1) : 0;
}

ElfFinding CheckSegments(const ProgramHeaders& loads, std::uint64_t size) {
  for (const Elf64_Phdr& load : loads) {
    if (const std::uint64_t end = FileEnd(load); end > size) {
      return CutShort(end, size);
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

}  // namespace

ElfFinding CheckElf(const char* path) {
  const FileDescriptor file(path);
  if (!file.IsOpen()) {
    return {ElfVerdict::kUnreadable, std::strerror(errno)};
  }
  const std::uint64_t size = file.Size();
  std::array<char, kFrontSize> front{};
  const auto length = file.Read(front.data(), front.size(), 0);
  if (!length) {
    return {ElfVerdict::kUnreadable, std::strerror(errno)};
  }
  Elf64_Ehdr header{};
  std::memcpy(&header, front.data(), sizeof(header));
  const bool isElf = std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0;
  if (isElf && *length < sizeof(header)) {
    return CutShort(sizeof(header), size);
  }
  if (ElfFinding finding = CheckHeader(header, size); finding.verdict != ElfVerdict::kLoadable) {
    return finding;
  }
  if (header.e_phnum == 0) {
    return Loadable();  // Nothing would be mapped; the dynamic loader says so.
  }
  ProgramHeaders headers(header.e_phnum);
  const std::size_t headersSize = headers.size() * sizeof(Elf64_Phdr);
  if (End(header.e_phoff, headersSize) <= *length) {
    std::memcpy(headers.data(), front.data() + header.e_phoff, headersSize);
  } else if (file.Read(headers.data(), headersSize, header.e_phoff) != headersSize) {
    return {ElfVerdict::kUnreadable, "its program headers cannot be read"};
  }
  return CheckProgramHeaders(headers, size);
}

}  // namespace netloader
