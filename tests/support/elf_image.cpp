#include "tests/support/elf_image.h"

#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <set>
#include <system_error>

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

LoaderVerdict AskLoader(const std::string& file) {
  constexpr int kLoads = 10;
  constexpr int kRefuses = 11;
  const pid_t child = ::fork();
  if (child < 0) {
    throw std::system_error(errno, std::generic_category(), "fork");
  }
  if (child == 0) {
    const rlimit no_core{0, 0};
    ::setrlimit(RLIMIT_CORE, &no_core);
    ::signal(SIGSEGV, SIG_DFL);  // A sanitizer would write pages about a crash that is an answer here.
    ::signal(SIGBUS, SIG_DFL);
    ::_exit(::dlopen(file.c_str(), RTLD_NOW) != nullptr ? kLoads : kRefuses);
  }
  int ended = 0;
  ::waitpid(child, &ended, 0);
  if (WIFEXITED(ended) && WEXITSTATUS(ended) == kLoads) {
    return LoaderVerdict::kLoads;
  }
  return WIFEXITED(ended) && WEXITSTATUS(ended) == kRefuses ? LoaderVerdict::kRefuses : LoaderVerdict::kCrashes;
}

}  // namespace tests
