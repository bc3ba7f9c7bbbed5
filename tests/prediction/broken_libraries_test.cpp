// Libraries that were cut short or spoilt: does a launch end as the doctor says, with the version that it says?
#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "tests/prediction/known_world.h"
#include "tests/support/elf_faults.h"
#include "tests/support/elf_image.h"

namespace tests {
namespace {

constexpr const char* kSpoilt = "6.0.2";
constexpr const char* kGood = "6.0.1";

ElfImage Library() {
  return ElfImage(ReadFile(HostLibrary()));
}

// A good old version and a place for a spoilt newer one.
class SpoiltNewestHost {
 public:
  SpoiltNewestHost() { world_.runtime.AddHost(kGood); }

  // The version that both agree on. A library whose headers keep the rules, but no longer describe what the file holds,
  // may do anything once it is loaded; only the launch's end is compared then.
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

TEST(PredictedBrokenLibraries, CutAnywhere) {
  const ElfImage library = Library();
  SpoiltNewestHost world;
  for (const std::size_t length : CutLengths(library)) {
    SCOPED_TRACE("cut to " + std::to_string(length) + " of " + std::to_string(library.Bytes().size()) + " bytes");
    const ElfImage cut = library.CutTo(length);
    EXPECT_EQ(world.DecisiveWith(cut), cut.IsWhole() ? kSpoilt : kGood);
  }
}

void CheckWith(SpoiltNewestHost& world, const ElfImage& library, std::size_t offset, std::size_t width, bool records) {
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
  SpoiltNewestHost world;
  for (const ElfField& field : kElfHeaderFields) {
    CheckWith(world, library, field.offset, field.width, true);
  }
}

TEST(PredictedBrokenLibraries, WithHostileSegments) {
  const ElfImage library = Library();
  const auto segments = library.ProgramHeaders();
  SpoiltNewestHost world;
  for (std::size_t i = 0; i < segments.size(); ++i) {
    if (segments[i].p_type != PT_LOAD && segments[i].p_type != PT_DYNAMIC) {
      continue;
    }
    const std::size_t header = library.Header().e_phoff + i * sizeof(Elf64_Phdr);
    for (const ElfField& field : kSegmentFields) {
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
