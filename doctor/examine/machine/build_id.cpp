#include "doctor/examine/machine/build_id.h"

#include <elf.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "foundation/file_descriptor.h"

namespace doctor {
namespace {

using tov::posix::FileDescriptor;

// Real notes are some hundred bytes; a damaged header may name any length.
constexpr std::size_t kLongestNotes = 65536;
constexpr std::size_t kAlignment = 4;

// Up to that many bytes; fewer at the end of the file.
std::string ReadAt(const FileDescriptor& file, std::uint64_t offset, std::size_t size) {
  std::string bytes(size, '\0');
  const ssize_t got = ::pread(file.Get(), bytes.data(), size, static_cast<off_t>(offset));
  bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  return bytes;
}

template <typename Header>
bool Take(std::string_view bytes, Header& header) {
  if (bytes.size() < sizeof header) {
    return false;
  }
  std::memcpy(&header, bytes.data(), sizeof header);
  return true;
}

std::string Hexadecimal(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string digits;
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    digits += kDigits[value >> 4];
    digits += kDigits[value & 15];
  }
  return digits;
}

std::size_t Aligned(std::size_t size) {
  return (size + kAlignment - 1) / kAlignment * kAlignment;
}

std::string IdIn(std::string_view notes) {
  constexpr std::string_view kOwner("GNU\0", 4);
  Elf64_Nhdr note{};
  while (Take(notes, note)) {
    notes.remove_prefix(sizeof note);
    const std::size_t name = Aligned(note.n_namesz);
    if (name > notes.size() || note.n_descsz > notes.size() - name) {
      break;
    }
    if (note.n_type == NT_GNU_BUILD_ID && notes.substr(0, note.n_namesz) == kOwner) {
      return Hexadecimal(notes.substr(name, note.n_descsz));
    }
    notes.remove_prefix(std::min(name + Aligned(note.n_descsz), notes.size()));
  }
  return {};
}

}  // namespace

std::string BuildId(const std::string& path) {
  const FileDescriptor file = tov::posix::OpenForReading(AT_FDCWD, path.c_str());
  Elf64_Ehdr header{};
  if (!file.IsOpen() || !Take(ReadAt(file, 0, sizeof header), header) ||
      std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_ident[EI_CLASS] != ELFCLASS64) {
    return {};
  }
  for (std::uint64_t at = 0; at < header.e_phnum; ++at) {
    Elf64_Phdr segment{};
    if (Take(ReadAt(file, header.e_phoff + at * sizeof segment, sizeof segment), segment) &&
        segment.p_type == PT_NOTE && segment.p_filesz <= kLongestNotes) {
      if (std::string id = IdIn(ReadAt(file, segment.p_offset, segment.p_filesz)); !id.empty()) {
        return id;
      }
    }
  }
  return {};
}

}  // namespace doctor
