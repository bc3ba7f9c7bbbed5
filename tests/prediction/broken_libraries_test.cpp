// Libraries that were cut short or spoilt: does a launch end as the doctor says, with the version that it says?
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "tests/prediction/known_world.h"
#include "tests/support/elf_image.h"

namespace tests {
namespace {

constexpr const char* kSpoilt = "6.0.2";
constexpr const char* kGood = "6.0.1";

ElfImage Library() {
  return ElfImage(ReadFile(HostLibrary()));
}

// A good old version and a place for a spoilt newer one.
class World {
 public:
  World() { world_.runtime.AddHost(kGood); }

  // The version that both agree on. A library whose headers keep the rules, but no longer tell what the file holds, may
  // do anything once it is loaded; only the launch's end is compared then.
  std::string DecisiveWith(const ElfImage& library, bool records = true) {
    world_.start.hosts_record = records;
    world_.runtime.AddHostOfBytes(kSpoilt, library.Bytes());
    const Comparison comparison = Compare(world_.host, world_.start);
    EXPECT_EQ(comparison.difference, "");
    return comparison.decisive;
  }

 private:
  KnownWorld world_;
};

// Every boundary, one byte to either side of it, and 200 more lengths spread over the file.
std::set<std::size_t> CutLengths(const ElfImage& library) {
  const std::size_t size = library.Bytes().size();
  std::set<std::size_t> lengths;
  for (const std::size_t boundary : library.Boundaries()) {
    lengths.insert({boundary == 0 ? 0 : boundary - 1, boundary, boundary + 1});
  }
  for (std::size_t i = 0; i < 200; ++i) {
    lengths.insert(size * i / 200);
  }
  lengths.erase(lengths.upper_bound(size), lengths.end());
  return lengths;
}

TEST(PredictedBrokenLibraries, CutAnywhere) {
  const ElfImage library = Library();
  World world;
  for (const std::size_t length : CutLengths(library)) {
    SCOPED_TRACE("cut to " + std::to_string(length) + " of " + std::to_string(library.Bytes().size()) + " bytes");
    const ElfImage cut = library.CutTo(length);
    EXPECT_EQ(world.DecisiveWith(cut), cut.IsWhole() ? kSpoilt : kGood);
  }
}

struct Field {
  std::size_t offset;
  std::size_t width;
};

constexpr auto kHeaderFields = std::to_array<Field>({
    {EI_MAG0, 1},
    {EI_MAG3, 1},
    {EI_CLASS, 1},
    {EI_DATA, 1},
    {EI_VERSION, 1},
    {EI_OSABI, 1},
    {offsetof(Elf64_Ehdr, e_type), 2},
    {offsetof(Elf64_Ehdr, e_machine), 2},
    {offsetof(Elf64_Ehdr, e_version), 4},
    {offsetof(Elf64_Ehdr, e_entry), 8},
    {offsetof(Elf64_Ehdr, e_phoff), 8},
    {offsetof(Elf64_Ehdr, e_shoff), 8},
    {offsetof(Elf64_Ehdr, e_flags), 4},
    {offsetof(Elf64_Ehdr, e_ehsize), 2},
    {offsetof(Elf64_Ehdr, e_phentsize), 2},
    {offsetof(Elf64_Ehdr, e_phnum), 2},
    {offsetof(Elf64_Ehdr, e_shnum), 2},
    {offsetof(Elf64_Ehdr, e_shentsize), 2},
    {offsetof(Elf64_Ehdr, e_shstrndx), 2},
});

constexpr auto kSegmentFields = std::to_array<Field>({
    {offsetof(Elf64_Phdr, p_offset), 8},
    {offsetof(Elf64_Phdr, p_filesz), 8},
    {offsetof(Elf64_Phdr, p_memsz), 8},
    {offsetof(Elf64_Phdr, p_vaddr), 8},
    {offsetof(Elf64_Phdr, p_align), 8},
    {offsetof(Elf64_Phdr, p_type), 4},
});

// Small, just beyond the file, around each sign and end of a number, and both ends of 64 bits.
std::vector<std::uint64_t> HostileValues(std::size_t fileSize) {
  return {0,
          1,
          2,
          3,
          fileSize,
          fileSize + 1,
          0x7fff,
          0x8000,
          0xffff,
          0x7fffffff,
          0x80000000,
          0xffffffff,
          0x100000000,
          0x7fffffffffffffff,
          0x8000000000000000,
          0xfffffffffffff000,
          0xffffffffffffffff};
}

void CheckWith(World& world, const ElfImage& library, std::size_t offset, std::size_t width, bool records) {
  for (const std::uint64_t value : HostileValues(library.Bytes().size())) {
    SCOPED_TRACE("offset " + std::to_string(offset) + " = " + std::to_string(value));
    const ElfImage spoilt = library.With(offset, width, value);
    const bool breaks_rules = !spoilt.IsWhole() || !spoilt.StaysInItsAddresses();
    const std::string decisive = world.DecisiveWith(spoilt, records || breaks_rules);
    if (breaks_rules) {
      EXPECT_EQ(decisive, kGood);
    }
  }
}

TEST(PredictedBrokenLibraries, WithHostileHeaders) {
  const ElfImage library = Library();
  World world;
  for (const Field& field : kHeaderFields) {
    CheckWith(world, library, field.offset, field.width, true);
  }
}

TEST(PredictedBrokenLibraries, WithHostileSegments) {
  const ElfImage library = Library();
  const auto segments = library.ProgramHeaders();
  World world;
  for (std::size_t i = 0; i < segments.size(); ++i) {
    if (segments[i].p_type != PT_LOAD && segments[i].p_type != PT_DYNAMIC) {
      continue;
    }
    const std::size_t header = library.Header().e_phoff + i * sizeof(Elf64_Phdr);
    for (const Field& field : kSegmentFields) {
      CheckWith(world, library, header + field.offset, field.width, false);
    }
    if (segments[i].p_type == PT_LOAD) {  // The end of it wraps around.
      const std::uint64_t wraps = std::uint64_t{0} - segments[i].p_offset + 1;
      EXPECT_EQ(world.DecisiveWith(library.With(header + offsetof(Elf64_Phdr, p_filesz), 8, wraps)), kGood);
    }
  }
}

}  // namespace
}  // namespace tests
