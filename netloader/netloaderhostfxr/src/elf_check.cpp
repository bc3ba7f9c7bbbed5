#include "netloader/netloaderhostfxr/src/elf_check.h"

#include <elf.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/file_descriptor.h"
#include "netloader/netloaderhostfxr/src/elf_segments.h"

namespace netloader {
namespace {

using tov::posix::FileDescriptor;
using ProgramHeaders = std::vector<Elf64_Phdr>;

// Room for the header and the program headers of nearly every library, so that one read is enough.
constexpr std::size_t kFrontSize = 832;

ElfFinding Unreadable(std::string reason) {
  return {ElfVerdict::kUnreadable, std::move(reason)};
}

// The beginning of a file.
struct Front {
  std::array<char, kFrontSize> bytes{};
  std::size_t length = 0;

  // What the file does not hold of it is zero.
  Elf64_Ehdr Header() const {
    Elf64_Ehdr header;
    std::memcpy(&header, bytes.data(), sizeof(header));
    return header;
  }
};

// The dynamic loader refuses these files too. They are refused first because all that follows reads the headers in this
// one form.
ElfFinding CheckHeader(const Front& front, std::uint64_t size) {
  const Elf64_Ehdr header = front.Header();
  if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) {
    return {ElfVerdict::kNotElf, "not an ELF file"};
  }
  if (front.length < sizeof(header)) {
    return CheckRange(0, sizeof(header), front.length);
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
  return CheckRange(header.e_phoff, std::uint64_t{header.e_phnum} * sizeof(Elf64_Phdr), size);
}

std::optional<ProgramHeaders> ReadProgramHeaders(const FileDescriptor& file, const Front& front) {
  const Elf64_Ehdr header = front.Header();
  ProgramHeaders headers(header.e_phnum);
  const std::size_t size = headers.size() * sizeof(Elf64_Phdr);
  if (size == 0) {
    return headers;  // There may be no memory for none, and memcpy takes no null.
  }
  if (header.e_phoff + size <= front.length) {
    std::memcpy(headers.data(), front.bytes.data() + header.e_phoff, size);
    return headers;
  }
  const ssize_t length = ::pread(file.Get(), headers.data(), size, static_cast<off_t>(header.e_phoff));
  return length == static_cast<ssize_t>(size) ? std::optional(std::move(headers)) : std::nullopt;
}

ElfFinding CheckFile(const FileDescriptor& file, std::uint64_t size) {
  Front front;
  const ssize_t length = ::pread(file.Get(), front.bytes.data(), front.bytes.size(), 0);
  if (length < 0) {
    return Unreadable(std::strerror(errno));
  }
  front.length = static_cast<std::size_t>(length);
  if (ElfFinding finding = CheckHeader(front, size); finding.verdict != ElfVerdict::kLoadable) {
    return finding;
  }
  const auto headers = ReadProgramHeaders(file, front);
  return headers ? CheckProgramHeaders(*headers, size) : Unreadable("its program headers cannot be read");
}

}  // namespace

ElfFinding CheckElf(const char* path) {
  // Whoever opens a fifo waits for a writer, for ever if none comes.
  const FileDescriptor file(::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0) {
    return Unreadable(std::strerror(errno));
  }
  if (!S_ISREG(status.st_mode)) {
    return Unreadable("not a regular file");
  }
  return CheckFile(file, static_cast<std::uint64_t>(status.st_size));
}

}  // namespace netloader
