#include "netloader/netloaderhostfxr/src/elf_check.h"

#include <elf.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "netloader/netloaderhostfxr/src/elf_segments.h"

namespace netloader {
namespace {

using ProgramHeaders = std::vector<Elf64_Phdr>;

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
  if (header.e_phoff + size <= front.length) {
    std::memcpy(headers.data(), front.bytes.data() + header.e_phoff, size);
    return headers;
  }
  return file.Read(headers.data(), size, header.e_phoff) == size ? std::optional(std::move(headers)) : std::nullopt;
}

ElfFinding CheckFile(const FileDescriptor& file, std::uint64_t size) {
  Front front;
  const auto length = file.Read(front.bytes.data(), front.bytes.size(), 0);
  if (!length) {
    return Unreadable(std::strerror(errno));
  }
  front.length = *length;
  if (ElfFinding finding = CheckHeader(front, size); finding.verdict != ElfVerdict::kLoadable) {
    return finding;
  }
  const auto headers = ReadProgramHeaders(file, front);
  return headers ? CheckProgramHeaders(*headers, size) : Unreadable("its program headers cannot be read");
}

}  // namespace

ElfFinding CheckElf(const char* path) {
  const FileDescriptor file(path);
  return file.IsOpen() ? CheckFile(file, file.Size()) : Unreadable(std::strerror(errno));
}

}  // namespace netloader
