// A sound library with spoilt headers, a line for each fault, against the dynamic loader itself: what the check accepts
// never makes it touch a page that the file does not have, and what it loads is not refused. The check promises nothing
// for headers that point out of the library and are neither of a segment to load nor of the dynamic section.
#include <elf.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/support.h"
#include "netloader/netloaderhostfxr/src/elf_check.h"

using netloader::ElfFinding;
using netloader::ElfVerdict;

namespace {

constexpr std::uint64_t kPage = 4096;
constexpr std::size_t kMostFaults = 16;
constexpr std::uint32_t kReadAtOnce[] = {PT_PHDR, PT_NOTE, PT_GNU_PROPERTY};

struct Field {
  std::string_view name;
  std::size_t offset;
  std::size_t width;
};

constexpr Field kHeaderFields[] = {
    {"class", EI_CLASS, 1},
    {"data", EI_DATA, 1},
    {"version", EI_VERSION, 1},
    {"osabi", EI_OSABI, 1},
    {"type", offsetof(Elf64_Ehdr, e_type), 2},
    {"machine", offsetof(Elf64_Ehdr, e_machine), 2},
    {"phoff", offsetof(Elf64_Ehdr, e_phoff), 8},
    {"phentsize", offsetof(Elf64_Ehdr, e_phentsize), 2},
    {"phnum", offsetof(Elf64_Ehdr, e_phnum), 2},
};
constexpr Field kSegmentFields[] = {
    {"type", offsetof(Elf64_Phdr, p_type), 4},     {"flags", offsetof(Elf64_Phdr, p_flags), 4},
    {"offset", offsetof(Elf64_Phdr, p_offset), 8}, {"vaddr", offsetof(Elf64_Phdr, p_vaddr), 8},
    {"filesz", offsetof(Elf64_Phdr, p_filesz), 8}, {"memsz", offsetof(Elf64_Phdr, p_memsz), 8},
    {"align", offsetof(Elf64_Phdr, p_align), 8},
};

std::string Library() {
  std::ifstream file(LIBRARY, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

template <typename Header>
Header At(std::string_view bytes, std::uint64_t offset) {
  Header header{};
  if (offset <= bytes.size() && sizeof(header) <= bytes.size() - offset) {
    std::memcpy(&header, bytes.data() + offset, sizeof(header));
  }
  return header;
}

std::vector<Elf64_Phdr> Segments(std::string_view bytes, std::uint32_t type) {
  const auto header = At<Elf64_Ehdr>(bytes, 0);
  std::vector<Elf64_Phdr> segments;
  for (std::uint64_t i = 0; i < header.e_phnum; ++i) {
    const auto segment = At<Elf64_Phdr>(bytes, header.e_phoff + i * sizeof(Elf64_Phdr));
    if (segment.p_type == type) {
      segments.push_back(segment);
    }
  }
  return segments;
}

template <std::size_t kCount>
void Set(std::string& bytes, std::size_t header, const Field (&fields)[kCount], std::string_view name,
         std::uint64_t value) {
  for (const Field& field : fields) {
    for (std::size_t i = 0; field.name == name && i < field.width; ++i) {
      bytes[(header + field.offset + i) % bytes.size()] = static_cast<char>(value >> (8 * i));
    }
  }
}

// "header FIELD VALUE", "INDEX FIELD VALUE" for a program header, "cut SIZE". A value behind a "+" is added.
void Spoil(std::string& bytes, const std::string& sound, std::string_view line) {
  const std::string_view what = Lines::Word(line);
  if (what == "cut") {
    bytes.resize(std::min<std::uint64_t>(bytes.size(), Lines::Number(line)));
  }
  if (bytes.size() < sizeof(Elf64_Ehdr)) {
    return;
  }
  const std::string_view field = Lines::Word(line);
  if (what == "header") {
    return Set(bytes, 0, kHeaderFields, field, Lines::Number(line));
  }
  const auto header = At<Elf64_Ehdr>(sound, 0);
  const std::size_t at = header.e_phoff + Lines::Number(what) % header.e_phnum * sizeof(Elf64_Phdr);
  std::uint64_t old = 0;
  for (const Field& each : kSegmentFields) {
    if (each.name == field && line.starts_with('+')) {
      std::memcpy(&old, sound.data() + at + each.offset, each.width);
      line.remove_prefix(1);
    }
  }
  Set(bytes, at, kSegmentFields, field, old + Lines::Number(line));
}

// The program that opens libraries, see loading_server.c. Ends with this one, whose pipe it reads.
class Server {
 public:
  explicit Server(const std::string& file) {
    int questions[2];
    int answers[2];
    Require(::pipe2(questions, O_CLOEXEC) == 0 && ::pipe2(answers, O_CLOEXEC) == 0);
    const pid_t child = ::fork();
    Require(child >= 0);
    if (child == 0) {
      ::dup2(questions[0], STDIN_FILENO);
      ::dup2(answers[1], STDOUT_FILENO);
      ::execl(LOADING_SERVER, LOADING_SERVER, file.c_str(), nullptr);
      ::_exit(1);
    }
    question_ = questions[1];
    answer_ = answers[0];
  }

  // How opening the file ends: 'l' it loads, 'r' it is refused, 'b' a bus error, 'd' another death.
  char Ask() const {
    char answer = '?';
    Require(::write(question_, &answer, 1) == 1);
    // The fuzzer's timer interrupts the waiting every ten minutes.
    Require(TEMP_FAILURE_RETRY(::read(answer_, &answer, 1)) == 1);
    return answer;
  }

 private:
  int question_ = -1;  // Both stay open until the end.
  int answer_ = -1;
};

// The range that the dynamic loader reserves, from the page of the first segment to the end of the last.
struct Range {
  explicit Range(const std::vector<Elf64_Phdr>& loads)
      : base(loads.front().p_vaddr / kPage * kPage),
        end((loads.back().p_vaddr + loads.back().p_memsz - base + kPage - 1) / kPage * kPage) {}

  std::uint64_t base;
  std::uint64_t end;  // Counted from the base.
};

// Whether a segment's pages leave the range or wrap around the last address: the dynamic loader maps them all the same,
// over whatever is there.
bool LeavesItsAddresses(const std::vector<Elf64_Phdr>& loads, const Range& range) {
  return std::ranges::any_of(loads, [&](const Elf64_Phdr& load) {
    const std::uint64_t length = std::max(load.p_filesz, load.p_memsz);
    const std::uint64_t position = load.p_vaddr - range.base;
    return position > range.end || length > range.end - position || load.p_vaddr < range.base ||
           load.p_vaddr + length + kPage < length;
  });
}

// Whether the dynamic section, the last of several, stands outside of the range, where the dynamic loader reads what
// something else has there.
bool IsDynamicElsewhere(std::string_view bytes, const Range& range) {
  const auto sections = Segments(bytes, PT_DYNAMIC);
  return !sections.empty() && sections.back().p_vaddr - range.base >= range.end;
}

// Whether program headers, notes or properties, which the dynamic loader reads at once, stand outside of the range:
// such a page may be of another file, or of the kernel's own, where a read can be a bus error too.
bool PointsElsewhere(std::string_view bytes, const Range& range) {
  const std::uint64_t table = At<Elf64_Ehdr>(bytes, 0).e_phnum * sizeof(Elf64_Phdr);
  return std::ranges::any_of(kReadAtOnce, [&](std::uint32_t type) {
    return std::ranges::any_of(Segments(bytes, type), [&](const Elf64_Phdr& header) {
      const std::uint64_t position = header.p_vaddr - range.base;
      return position > range.end || std::max(header.p_memsz, table) > range.end - position;
    });
  });
}

// Whether an empty segment has the page in which it begins mapped from behind the file's end.
bool IsEmptyBeyond(const Elf64_Phdr& load, std::uint64_t size) {
  return load.p_filesz == 0 && load.p_vaddr % kPage != 0 && load.p_offset / kPage * kPage >= size;
}

bool IsCutShort(const Elf64_Phdr& load, std::uint64_t size) {
  return load.p_filesz != 0 && (load.p_offset > size || load.p_filesz > size - load.p_offset);
}

// The damages that the dynamic loader may be lucky with: segments or a dynamic section outside of the library's own
// addresses, and segments that the file does not hold to their end, as long as nothing touches what is missing.
bool IsRefusedOnPurpose(std::string_view bytes, const ElfFinding& finding) {
  const auto loads = Segments(bytes, PT_LOAD);
  if (finding.detail == "a segment outside the library's own addresses") {
    return LeavesItsAddresses(loads, Range(loads));
  }
  if (finding.detail == "a dynamic section outside the loadable segments") {
    return IsDynamicElsewhere(bytes, Range(loads));
  }
  return finding.verdict == ElfVerdict::kCutShort && std::ranges::any_of(loads, [&](const Elf64_Phdr& load) {
           return IsCutShort(load, bytes.size()) || IsEmptyBeyond(load, bytes.size());
         });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string sound = Library();
  static MemoryFile file;
  static const Server server(file.Path());
  std::string bytes = sound;
  Lines lines(AsText(data, size));
  for (std::size_t i = 0; i < kMostFaults && !lines.IsAtEnd(); ++i) {
    Spoil(bytes, sound, lines.Next());
  }
  file.Write(bytes);

  const ElfFinding finding = netloader::CheckElf(file.Path().c_str());
  const char loading = server.Ask();

  const bool isLoadable = finding.verdict == ElfVerdict::kLoadable;
  Require(bytes != sound || (isLoadable && loading == 'l'));
  Require(!isLoadable || loading != 'b' || PointsElsewhere(bytes, Range(Segments(bytes, PT_LOAD))));
  Require(loading != 'l' || isLoadable || IsRefusedOnPurpose(bytes, finding));
  return 0;
}
