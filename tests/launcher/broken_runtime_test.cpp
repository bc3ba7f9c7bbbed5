// A runtime host that was cut short or spoilt never stops the search: the older version runs.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <set>
#include <string>

#include "tests/support/elf_image.h"
#include "tests/support/launcher.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/settings_file.h"

namespace tests {
namespace {

constexpr const char* kSpoilt = "6.0.2";
constexpr const char* kGood = "6.0.1";

// A good old version and a place for a spoilt newer one.
class World {
 public:
  World() { runtime_.AddHost(kGood); }

  // Says which version ran with these bytes as the newer one; the words of a crash when none did.
  std::string VersionThatRanWith(const ElfImage& library) {
    runtime_.AddHostOfBytes(kSpoilt, library.Bytes());
    host_.Forget();
    const auto outcome = Launcher(host_).Folder(runtime_.Root()).Run();
    if (const auto ended = EndedSilently(outcome, 0); !ended) {
      return ended.message();
    }
    return host_.VersionThatRan();
  }

  // What the dynamic loader itself makes of the file that was tried last.
  LoaderVerdict AskLoaderAboutTheSame() const { return AskLoader(runtime_.HostFile(kSpoilt)); }

 private:
  RuntimeTree runtime_{"/var/opt/morvath"};
  StandInHost host_;
  SettingsFile settings_ = SettingsFile::ForRoot(runtime_.Root());
};

ElfImage Library() {
  return ElfImage(ReadFile(HostLibrary()));
}

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

TEST(BrokenRuntime, ALibraryCutAnywhereIsPassedOverUnlessAllThatIsLoadedIsThere) {
  const ElfImage library = Library();
  World world;
  int broken = 0;
  for (const std::size_t length : CutLengths(library)) {
    SCOPED_TRACE("cut to " + std::to_string(length) + " of " + std::to_string(library.Bytes().size()) + " bytes");
    const ElfImage cut = library.CutTo(length);
    EXPECT_EQ(world.VersionThatRanWith(cut), cut.IsWhole() ? kSpoilt : kGood);
    broken += cut.IsWhole() ? 0 : 1;
  }
  EXPECT_GE(broken, 200);
}

struct Field {
  const char* name;
  std::size_t offset;
  std::size_t width;
};

constexpr auto kHeaderFields = std::to_array<Field>({
    {"first magic byte", EI_MAG0, 1},
    {"last magic byte", EI_MAG3, 1},
    {"class", EI_CLASS, 1},
    {"byte order", EI_DATA, 1},
    {"version", EI_VERSION, 1},
    {"system", EI_OSABI, 1},
    {"e_type", offsetof(Elf64_Ehdr, e_type), 2},
    {"e_machine", offsetof(Elf64_Ehdr, e_machine), 2},
    {"e_version", offsetof(Elf64_Ehdr, e_version), 4},
    {"e_entry", offsetof(Elf64_Ehdr, e_entry), 8},
    {"e_phoff", offsetof(Elf64_Ehdr, e_phoff), 8},
    {"e_shoff", offsetof(Elf64_Ehdr, e_shoff), 8},
    {"e_flags", offsetof(Elf64_Ehdr, e_flags), 4},
    {"e_ehsize", offsetof(Elf64_Ehdr, e_ehsize), 2},
    {"e_phentsize", offsetof(Elf64_Ehdr, e_phentsize), 2},
    {"e_phnum", offsetof(Elf64_Ehdr, e_phnum), 2},
    {"e_shnum", offsetof(Elf64_Ehdr, e_shnum), 2},
    {"e_shentsize", offsetof(Elf64_Ehdr, e_shentsize), 2},
    {"e_shstrndx", offsetof(Elf64_Ehdr, e_shstrndx), 2},
});

constexpr auto kSegmentFields = std::to_array<Field>({
    {"p_offset", offsetof(Elf64_Phdr, p_offset), 8},
    {"p_filesz", offsetof(Elf64_Phdr, p_filesz), 8},
    {"p_memsz", offsetof(Elf64_Phdr, p_memsz), 8},
    {"p_vaddr", offsetof(Elf64_Phdr, p_vaddr), 8},
    {"p_align", offsetof(Elf64_Phdr, p_align), 8},
    {"p_type", offsetof(Elf64_Phdr, p_type), 4},
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

// Tries one spoilt library. One that breaks the rules must be passed over. One that keeps them is left to the dynamic
// loader: what that refuses is passed over, what it loads is never refused. Where it crashes on headers that keep every
// rule but no longer tell what the file holds, nothing can be promised.
void Check(World& world, const ElfImage& spoilt, int& passed_over) {
  const std::string version = world.VersionThatRanWith(spoilt);
  if (!spoilt.IsWhole() || !spoilt.StaysInItsAddresses()) {
    EXPECT_EQ(version, kGood);
    ++passed_over;
    return;
  }
  const LoaderVerdict verdict = world.AskLoaderAboutTheSame();
  if (verdict != LoaderVerdict::kCrashes) {
    EXPECT_EQ(version == kGood, verdict == LoaderVerdict::kRefuses) << version;
  }
}

TEST(BrokenRuntime, AHeaderWithHostileFieldsIsPassedOver) {
  const ElfImage library = Library();
  World world;
  int passed_over = 0;
  for (const Field& field : kHeaderFields) {
    for (const std::uint64_t value : HostileValues(library.Bytes().size())) {
      SCOPED_TRACE(std::string(field.name) + " = " + std::to_string(value));
      Check(world, library.With(field.offset, field.width, value), passed_over);
    }
  }
  EXPECT_GE(passed_over, 80);
}

TEST(BrokenRuntime, ASegmentWithHostileFieldsIsPassedOver) {
  const ElfImage library = Library();
  const auto segments = library.ProgramHeaders();
  World world;
  int passed_over = 0;
  for (std::size_t i = 0; i < segments.size(); ++i) {
    if (segments[i].p_type != PT_LOAD && segments[i].p_type != PT_DYNAMIC) {
      continue;
    }
    const std::size_t header = library.Header().e_phoff + i * sizeof(Elf64_Phdr);
    for (const Field& field : kSegmentFields) {
      for (const std::uint64_t value : HostileValues(library.Bytes().size())) {
        SCOPED_TRACE("segment " + std::to_string(i) + ", " + field.name + " = " + std::to_string(value));
        Check(world, library.With(header + field.offset, field.width, value), passed_over);
      }
    }
  }
  EXPECT_GE(passed_over, 40);
}

TEST(BrokenRuntime, SegmentsBeyondTheEndAreSeenAlthoughTheSumOverflows) {
  const ElfImage library = Library();
  const auto segments = library.ProgramHeaders();
  World world;
  for (std::size_t i = 0; i < segments.size(); ++i) {
    if (segments[i].p_type == PT_LOAD) {
      SCOPED_TRACE(i);
      const std::size_t header = library.Header().e_phoff + i * sizeof(Elf64_Phdr);
      const std::uint64_t wraps = std::uint64_t{0} - segments[i].p_offset + 1;
      EXPECT_EQ(world.VersionThatRanWith(library.With(header + offsetof(Elf64_Phdr, p_filesz), 8, wraps)), kGood);
    }
  }
}

TEST(BrokenRuntime, LibrariesForOtherMachinesArePassedOver) {
  const ElfImage library = Library();
  World world;
  for (const Elf64_Half machine : std::initializer_list<Elf64_Half>{EM_386, EM_ARM, EM_AARCH64, EM_RISCV, EM_NONE}) {
    SCOPED_TRACE(machine);
    EXPECT_EQ(world.VersionThatRanWith(library.With(offsetof(Elf64_Ehdr, e_machine), 2, machine)), kGood);
  }
}

TEST(BrokenRuntime, AnyNumberOfThemIsPassedOver) {
  const ElfImage library = Library();
  RuntimeTree runtime("/var/opt/morvath");
  runtime.AddHost("6.0.0");
  int version = 0;
  for (const std::size_t length : CutLengths(library)) {
    if (!library.CutTo(length).IsWhole()) {
      runtime.AddHostOfBytes("6.0." + std::to_string(++version), library.CutTo(length).Bytes());
    }
  }
  const auto settings = SettingsFile::ForRoot(runtime.Root());
  const StandInHost host;

  EXPECT_TRUE(EndedSilently(Launcher(host).Run(), 0));
  EXPECT_EQ(host.VersionThatRan(), "6.0.0");
}

}  // namespace
}  // namespace tests
