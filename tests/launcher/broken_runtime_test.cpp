// A runtime host that was cut short or spoilt never stops the search: the older version runs.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "tests/support/elf_faults.h"
#include "tests/support/elf_image.h"
#include "tests/support/launcher.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/settings_file.h"

namespace tests {
namespace {

constexpr const char* kSpoilt = "6.0.2";
constexpr const char* kGood = "6.0.1";

// A good old version and a place for a spoilt newer one.
class SpoiltNewestHost {
 public:
  SpoiltNewestHost() { runtime_.AddHost(kGood); }

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

TEST(BrokenRuntime, ALibraryCutAnywhereIsPassedOverUnlessAllThatIsLoadedIsThere) {
  const ElfImage library = Library();
  SpoiltNewestHost world;
  int broken = 0;
  for (const std::size_t length : CutLengths(library)) {
    SCOPED_TRACE("cut to " + std::to_string(length) + " of " + std::to_string(library.Bytes().size()) + " bytes");
    const ElfImage cut = library.CutTo(length);
    EXPECT_EQ(world.VersionThatRanWith(cut), cut.IsWhole() ? kSpoilt : kGood);
    broken += cut.IsWhole() ? 0 : 1;
  }
  EXPECT_GE(broken, 200);
}

// Tries one spoilt library. One that breaks the rules must be passed over. One that keeps them is left to the dynamic
// loader: what that refuses is passed over, what it loads is never refused. Where it crashes on headers that keep every
// rule but no longer describe what the file holds, nothing can be promised.
void Check(SpoiltNewestHost& world, const ElfImage& spoilt, int& passed_over) {
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
  SpoiltNewestHost world;
  int passed_over = 0;
  for (const ElfField& field : kElfHeaderFields) {
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
  SpoiltNewestHost world;
  int passed_over = 0;
  for (std::size_t i = 0; i < segments.size(); ++i) {
    if (segments[i].p_type != PT_LOAD && segments[i].p_type != PT_DYNAMIC) {
      continue;
    }
    const std::size_t header = library.Header().e_phoff + i * sizeof(Elf64_Phdr);
    for (const ElfField& field : kSegmentFields) {
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
  SpoiltNewestHost world;
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
  SpoiltNewestHost world;
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
