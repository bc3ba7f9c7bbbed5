#include "tests/support/elf_image.h"

#include <algorithm>
#include <set>

#include "tests/support/ask_loader.h"
#include "tests/support/process.h"

namespace tests {

std::vector<Elf64_Phdr> ElfImage::ProgramHeaders() const {
  std::vector<Elf64_Phdr> headers;
  const Elf64_Ehdr header = Header();
  for (std::uint64_t i = 0; i < header.e_phnum && Holds(header.e_phoff, (i + 1) * sizeof(Elf64_Phdr)); ++i) {
    headers.push_back(At<Elf64_Phdr>(header.e_phoff + i * sizeof(Elf64_Phdr)));
  }
  return headers;
}

bool ElfImage::IsWhole() const {
  const Elf64_Ehdr header = Header();
  const auto headers = ProgramHeaders();
  const bool is_for_here = bytes_.size() >= sizeof header && bytes_.starts_with(ELFMAG) &&
                           header.e_ident[EI_CLASS] == ELFCLASS64 && header.e_ident[EI_DATA] == ELFDATA2LSB &&
                           header.e_type == ET_DYN && header.e_machine == EM_X86_64;
  return is_for_here && header.e_phentsize == sizeof(Elf64_Phdr) && headers.size() == header.e_phnum &&
         std::ranges::all_of(headers, [this](const Elf64_Phdr& segment) {
           return segment.p_type != PT_LOAD || Holds(segment.p_offset, segment.p_filesz);
         });
}

bool ElfImage::StaysInItsAddresses() const {
  constexpr std::uint64_t kPage = 4096;
  auto segments = ProgramHeaders();
  std::erase_if(segments, [](const Elf64_Phdr& segment) { return segment.p_type != PT_LOAD; });
  if (segments.empty()) {
    return true;
  }
  // Sums of addresses wrap around in the dynamic loader; what ends before it begins is not written to.
  const auto end = [](const Elf64_Phdr& segment) {
    return static_cast<std::int64_t>(segment.p_vaddr + segment.p_memsz);
  };
  const std::uint64_t first = segments.front().p_vaddr / kPage;
  const auto last = (end(segments.back()) + std::int64_t{kPage} - 1) / std::int64_t{kPage} * std::int64_t{kPage};
  return std::ranges::all_of(segments, [&](const Elf64_Phdr& segment) {
    return segment.p_vaddr / kPage >= first && static_cast<std::int64_t>(segment.p_vaddr) < last &&
           end(segment) <= last;
  });
}

std::vector<std::size_t> ElfImage::Boundaries() const {
  const Elf64_Ehdr header = Header();
  std::set<std::size_t> boundaries{0, sizeof header, bytes_.size()};
  for (std::size_t i = 0; i <= header.e_phnum; ++i) {
    boundaries.insert(header.e_phoff + i * sizeof(Elf64_Phdr));
  }
  for (const Elf64_Phdr& segment : ProgramHeaders()) {
    boundaries.insert(segment.p_offset);
    boundaries.insert(segment.p_offset + segment.p_filesz);
  }
  return {boundaries.begin(), boundaries.end()};
}

ElfImage ElfImage::With(std::size_t offset, std::size_t width, std::uint64_t value) const {
  std::string bytes = bytes_;
  for (std::size_t i = 0; i < width; ++i) {
    bytes.at(offset + i) = static_cast<char>(value >> (8 * i));
  }
  return ElfImage(std::move(bytes));
}

LoaderVerdict AskLoader(const std::filesystem::path& file) {
  switch (Command(ASK_LOADER).Arguments({file}).Folder(file.parent_path()).Run().status) {
    case kAskLoaderLoads:
      return LoaderVerdict::kLoads;
    case kAskLoaderRefuses:
      return LoaderVerdict::kRefuses;
    default:
      return LoaderVerdict::kCrashes;
  }
}

}  // namespace tests
