// A real libhostfxr.so, cut short as an interrupted copy leaves it: the older version beside it runs, and nothing that
// still is a whole library is passed over.
#include <set>
#include <string>

#include "tests/real/installed_product.h"
#include "tests/support/elf_image.h"
#include "tests/support/temp_folder.h"

namespace tests {
namespace {

class CutHostOnRealDotnet : public RealDotnet {
 protected:
  // The newer of two versions is cut to each of the lengths in turn. What lies behind the loadable segments (sections,
  // debugging aids) is never looked at by the dynamic loader, so without that the library still is whole.
  void CutTo(const std::set<std::size_t>& lengths, const ElfImage& library) const {
    RealRuntimeTree runtime(prepared_);
    runtime.AddRealHost("6.0.36");
    const InstalledProduct product(prepared_, runtime.Root());
    for (const std::size_t length : lengths) {
      const ElfImage cut = library.CutTo(length);
      runtime.AddHostOfBytes("6.0.37", cut.Bytes());

      const Outcome outcome = product.Start({"show"}).Run();

      EXPECT_TRUE(RanOn(runtime.HostFile(cut.IsWhole() ? "6.0.37" : "6.0.36"), outcome)) << "cut to " << length;
      EXPECT_EQ(outcome.err, "") << "cut to " << length;
    }
  }

  [[nodiscard]] ElfImage RealLibrary() const { return ElfImage(ReadFile(prepared_.HostFile())); }
};

TEST_F(CutHostOnRealDotnet, OlderVersionRunsWhenCutAtAHeaderOrSegmentOrOneByteBesideIt) {
  const ElfImage library = RealLibrary();
  std::set<std::size_t> lengths;
  for (const std::size_t boundary : library.Boundaries()) {
    lengths.insert({boundary == 0 ? 0 : boundary - 1, boundary, boundary + 1});
  }

  ASSERT_GE(lengths.size(), 30U);
  CutTo(lengths, library);
}

TEST_F(CutHostOnRealDotnet, OlderVersionRunsWhenCutAnywhereElse) {
  const ElfImage library = RealLibrary();
  std::set<std::size_t> lengths;
  for (std::size_t i = 0; i < 200; ++i) {
    lengths.insert(library.Bytes().size() * i / 200 + i);
  }

  CutTo(lengths, library);
}

TEST_F(CutHostOnRealDotnet, WholeLibraryIsNotPassedOver) {
  const ElfImage library = RealLibrary();

  ASSERT_TRUE(library.IsWhole());
  CutTo({library.Bytes().size()}, library);
}

}  // namespace
}  // namespace tests
