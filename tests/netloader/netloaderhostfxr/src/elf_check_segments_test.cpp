// What the check thinks of segments, and that the dynamic loader agrees.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "netloader/netloaderhostfxr/src/elf_check.h"
#include "tests/support/elf_faults.h"
#include "tests/support/elf_image.h"
#include "tests/support/stand_in_host.h"
#include "tests/support/temp_folder.h"

namespace netloader {
namespace {

using tests::ElfField;
using tests::ElfImage;
using tests::LoaderVerdict;

constexpr std::uint64_t kPage = 4096;
constexpr const char* kSegmentOutside = "a segment outside the library's own addresses";
constexpr const char* kDynamicOutside = "a dynamic section outside the loadable segments";
constexpr const char* kDynamicClosed = "a dynamic section in a segment without any permission";
constexpr const char* kDynamicUneven = "a dynamic section whose address is not a multiple of 8";

// A library to be spoilt, one field of one program header after the other.
class Spoilt {
 public:
  explicit Spoilt(ElfImage image = ElfImage(tests::ReadFile(tests::HostLibrary()))) : image_(std::move(image)) {}

  [[nodiscard]] Elf64_Phdr Segment(std::size_t index) const { return image_.ProgramHeaders().at(index); }
  [[nodiscard]] std::uint64_t Size() const { return image_.Bytes().size(); }
  [[nodiscard]] const ElfImage& Image() const { return image_; }

  // Where in the table the headers of that type stand.
  [[nodiscard]] std::vector<std::size_t> Find(std::uint32_t type) const {
    const auto headers = image_.ProgramHeaders();
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < headers.size(); ++i) {
      if (headers[i].p_type == type) {
        found.push_back(i);
      }
    }
    return found;
  }
  [[nodiscard]] std::size_t FirstLoad() const { return Find(PT_LOAD).front(); }
  [[nodiscard]] std::size_t LastLoad() const { return Find(PT_LOAD).back(); }
  [[nodiscard]] std::size_t Dynamic() const { return Find(PT_DYNAMIC).front(); }

  Spoilt& Set(ElfImage image) {
    image_ = std::move(image);
    return *this;
  }
  Spoilt& Set(std::size_t index, const Elf64_Phdr& header) {
    const std::size_t at = image_.Header().e_phoff + index * sizeof(Elf64_Phdr);
    std::string bytes = image_.Bytes();
    bytes.replace(at, sizeof(header), reinterpret_cast<const char*>(&header), sizeof(header));
    return Set(ElfImage(std::move(bytes)));
  }
  Spoilt& Set(std::size_t index, std::uint64_t Elf64_Phdr::*field, std::uint64_t value) {
    Elf64_Phdr header = Segment(index);
    header.*field = value;
    return Set(index, header);
  }

  [[nodiscard]] ElfFinding Check() { return CheckElf(Write().c_str()); }
  [[nodiscard]] LoaderVerdict AskLoader() { return tests::AskLoader(Write()); }

 private:
  std::string Write() const {
    tests::WriteFile(*folder_ / "libhostfxr.so", image_.Bytes());
    return *folder_ / "libhostfxr.so";
  }

  ElfImage image_;
  std::shared_ptr<tests::TempFolder> folder_ = std::make_shared<tests::TempFolder>();
};

std::string CutShort(std::uint64_t needed, std::uint64_t size) {
  return "cut short: needs at least " + std::to_string(needed) + " bytes, has " + std::to_string(size);
}

TEST(ElfCheckSegments, ASegmentMayReachTheEndOfTheFileAndNotOneByteBeyond) {
  const Spoilt whole;
  const std::uint64_t rest = whole.Size() - whole.Segment(whole.FirstLoad()).p_offset;

  const auto first = whole.FirstLoad();
  const ElfFinding toTheEnd = Spoilt().Set(first, &Elf64_Phdr::p_filesz, rest).Check();
  const ElfFinding beyond = Spoilt().Set(first, &Elf64_Phdr::p_filesz, rest + 1).Check();

  EXPECT_NE(toTheEnd.verdict, ElfVerdict::kCutShort);
  EXPECT_EQ(beyond.verdict, ElfVerdict::kCutShort);
  EXPECT_EQ(beyond.detail, CutShort(whole.Size() + 1, whole.Size()));
}

TEST(ElfCheckSegments, ASegmentWhoseEndHasNoNumberMeansThatTheFileIsCutShort) {
  Spoilt library;
  library.Set(library.FirstLoad(), &Elf64_Phdr::p_offset, UINT64_MAX - 15);

  const ElfFinding finding = library.Check();

  EXPECT_EQ(finding.verdict, ElfVerdict::kCutShort);
  EXPECT_EQ(finding.detail, CutShort(UINT64_MAX, library.Size()));
}

TEST(ElfCheckSegments, EverySegmentMustStandBetweenTheFirstOnesStartAndTheLastOnesEnd) {
  const Spoilt whole;
  const Elf64_Phdr last = whole.Segment(whole.LastLoad());
  const std::uint64_t end = (last.p_vaddr + last.p_memsz + kPage - 1) / kPage * kPage;
  const auto second = whole.Find(PT_LOAD).at(1);
  const std::uint64_t size = whole.Segment(second).p_memsz;
  struct Row {
    const char* name;
    std::uint64_t address;
    bool good;
  };
  for (const auto& [name, address, good] : std::to_array<Row>({
           {"at the last page's end", end - size, true},
           {"one byte beyond it", end - size + 1, false},
           {"far away", std::uint64_t{1} << 40, false},
           {"at the last of all addresses", UINT64_MAX, false},
           {"at the end of all pages", UINT64_MAX - kPage - size, false},
       })) {
    SCOPED_TRACE(name);

    const ElfFinding finding = Spoilt().Set(second, &Elf64_Phdr::p_vaddr, address).Check();

    EXPECT_EQ(finding.verdict, good ? ElfVerdict::kLoadable : ElfVerdict::kMalformed);
    EXPECT_EQ(finding.detail, good ? "" : kSegmentOutside);
  }
}

TEST(ElfCheckSegments, ASegmentBelowTheFirstOneIsOutside) {
  Spoilt library;
  const auto first = library.FirstLoad();
  library.Set(first, &Elf64_Phdr::p_vaddr, kPage);
  library.Set(library.Find(PT_LOAD).at(1), &Elf64_Phdr::p_vaddr, kPage - 1);

  const ElfFinding finding = library.Check();

  EXPECT_EQ(finding.verdict, ElfVerdict::kMalformed);
  EXPECT_EQ(finding.detail, kSegmentOutside);
}

TEST(ElfCheckSegments, SegmentsOutOfOrderAreRefusedThoughTheDynamicLoaderIsLuckyWithThem) {
  const Spoilt whole;
  const auto first = whole.FirstLoad();
  const auto second = whole.Find(PT_LOAD).at(1);
  Spoilt library = Spoilt().Set(first, whole.Segment(second)).Set(second, whole.Segment(first));

  EXPECT_EQ(library.Check().detail, kSegmentOutside);
  EXPECT_EQ(library.AskLoader(), LoaderVerdict::kLoads);
}

TEST(ElfCheckSegments, ACutInTheLastPageIsRefusedThoughTheDynamicLoaderIsLuckyWithIt) {
  const Spoilt whole;
  const Elf64_Phdr last = whole.Segment(whole.LastLoad());
  const std::uint64_t end = last.p_offset + last.p_filesz;
  Spoilt cut(whole.Image().CutTo(end - 1));

  EXPECT_EQ(cut.Check().detail, CutShort(end, end - 1));
  EXPECT_EQ(cut.AskLoader(), LoaderVerdict::kLoads);
}

// The same library with every segment's address raised, as if it had been linked there; nothing in it is relocated.
Spoilt LinkedAt(std::uint64_t address) {
  Spoilt library;
  const std::size_t count = library.Image().ProgramHeaders().size();
  for (std::size_t i = 0; i < count; ++i) {
    library.Set(i, &Elf64_Phdr::p_vaddr, library.Segment(i).p_vaddr + address);
  }
  return library;
}

TEST(ElfCheckSegments, OnlyTheDistanceFromTheFirstSegmentCounts) {
  for (const std::uint64_t address : {std::uint64_t{0}, std::uint64_t{1} << 47, UINT64_MAX / 2 + 1 - kPage,
                                      UINT64_MAX / 2 + 1, UINT64_MAX - 0x7fffffff}) {
    SCOPED_TRACE(address);
    Spoilt whole = LinkedAt(address);
    const auto second = whole.Find(PT_LOAD).at(1);
    const Elf64_Phdr last = whole.Segment(whole.LastLoad());
    Spoilt outside = LinkedAt(address).Set(second, &Elf64_Phdr::p_vaddr, last.p_vaddr + last.p_memsz + kPage);

    EXPECT_EQ(whole.Check().detail, "");
    EXPECT_EQ(outside.Check().detail, kSegmentOutside);
  }
}

TEST(ElfCheckSegments, ASegmentThatReachesTheLastAddressOrWrapsAroundItIsRefused) {
  struct Row {
    const char* name;
    std::size_t segment;
    bool reaches;
  };
  for (const auto& [name, segment, reaches] : std::to_array<Row>({
           {"the first one reaches it", 0, true},
           {"the second one reaches it", 1, true},
           {"the second one wraps around it", 1, false},
           {"the last one reaches it", 3, true},
       })) {
    SCOPED_TRACE(name);
    const Elf64_Phdr load = Spoilt().Segment(Spoilt().Find(PT_LOAD).at(segment));
    const std::uint64_t end = (load.p_vaddr + load.p_filesz + kPage - 1) / kPage * kPage;
    Spoilt library = LinkedAt((reaches ? 0 : kPage) - end);

    EXPECT_EQ(library.Check().detail, kSegmentOutside);
  }
}

TEST(ElfCheckSegments, ASegmentInTheFirstOnesPageIsInside) {
  Spoilt library;
  library.Set(library.FirstLoad(), &Elf64_Phdr::p_vaddr, kPage - 1);
  library.Set(library.Find(PT_LOAD).at(1), &Elf64_Phdr::p_vaddr, 0);

  EXPECT_EQ(library.Check().verdict, ElfVerdict::kLoadable);
}

TEST(ElfCheckSegments, TheDynamicSectionMustStandInPagesThatComeFromTheFile) {
  const Spoilt whole;
  const Elf64_Phdr last = whole.Segment(whole.LastLoad());
  const std::uint64_t end = (last.p_vaddr + last.p_filesz + kPage - 1) / kPage * kPage;
  struct Row {
    const char* name;
    std::uint64_t address;
    bool good;
  };
  for (const auto& [name, address, good] : std::to_array<Row>({
           {"at the very beginning", 0, true},
           {"in the last page", end - 8, true},
           {"in the page after it", end, false},
           {"nowhere", UINT64_MAX, false},
       })) {
    SCOPED_TRACE(name);

    const ElfFinding finding = Spoilt().Set(whole.Dynamic(), &Elf64_Phdr::p_vaddr, address).Check();

    EXPECT_EQ(finding.verdict, good ? ElfVerdict::kLoadable : ElfVerdict::kMalformed);
    EXPECT_EQ(finding.detail, good ? "" : kDynamicOutside);
  }
}

TEST(ElfCheckSegments, TheDynamicSectionsAddressMustBeAMultipleOf8) {
  const Spoilt whole;
  const std::uint64_t address = whole.Segment(whole.Dynamic()).p_vaddr;
  for (std::uint64_t offset = 0; offset < 8; ++offset) {
    SCOPED_TRACE(offset);
    Spoilt library = Spoilt().Set(whole.Dynamic(), &Elf64_Phdr::p_vaddr, address + offset);

    EXPECT_EQ(library.Check().detail, offset == 0 ? "" : kDynamicUneven);
    EXPECT_EQ(library.AskLoader() == LoaderVerdict::kLoads, offset == 0);
  }
}

TEST(ElfCheckSegments, TheDynamicSectionMustStandInASegmentWithAnyPermission) {
  const Spoilt whole;
  for (const std::uint32_t permissions : std::to_array<std::uint32_t>({0, PF_R, PF_W, PF_X, PF_R | PF_W})) {
    SCOPED_TRACE(permissions);
    Elf64_Phdr last = whole.Segment(whole.LastLoad());
    last.p_flags = permissions;
    Spoilt library = Spoilt().Set(whole.LastLoad(), last);

    EXPECT_EQ(library.Check().detail, permissions == 0 ? kDynamicClosed : "");
  }
}

// The last segment twice, with these permissions.
Spoilt WithLastSegmentTwice(std::uint32_t first, std::uint32_t second) {
  Spoilt library;
  Elf64_Phdr segment = library.Segment(library.LastLoad());
  segment.p_flags = first;
  library.Set(library.LastLoad(), segment);
  segment.p_flags = second;
  return library.Set(library.Find(PT_GNU_STACK).front(), segment);
}

TEST(ElfCheckSegments, PagesOfTwoSegmentsHaveThePermissionsOfTheLater) {
  Spoilt opened = WithLastSegmentTwice(0, PF_R | PF_W);
  Spoilt closed = WithLastSegmentTwice(PF_R | PF_W, 0);

  EXPECT_EQ(opened.Check().detail, "");
  EXPECT_EQ(opened.AskLoader(), LoaderVerdict::kLoads);
  EXPECT_EQ(closed.Check().detail, kDynamicClosed);
  EXPECT_EQ(closed.AskLoader(), LoaderVerdict::kCrashes);
}

TEST(ElfCheckSegments, OfTwoDynamicSectionsTheLastOneCountsAsItDoesForTheDynamicLoader) {
  const Spoilt whole;
  Elf64_Phdr stray = whole.Segment(whole.Dynamic());
  stray.p_vaddr = std::uint64_t{1} << 40;
  const auto notes = whole.Find(PT_NOTE);
  ASSERT_FALSE(notes.empty());
  ASSERT_GT(notes.front(), whole.Dynamic());
  const auto note = notes.front();

  Spoilt strayFirst = Spoilt().Set(whole.Dynamic(), stray).Set(note, whole.Segment(whole.Dynamic()));
  Spoilt strayLast = Spoilt().Set(note, stray);

  EXPECT_EQ(strayFirst.Check().verdict, ElfVerdict::kLoadable);
  EXPECT_EQ(strayFirst.AskLoader(), LoaderVerdict::kLoads);
  EXPECT_EQ(strayLast.Check().detail, kDynamicOutside);
  EXPECT_NE(strayLast.AskLoader(), LoaderVerdict::kLoads);
}

TEST(ElfCheckSegments, WithoutAnySegmentItIsLeftToTheDynamicLoaderToRefuse) {
  Spoilt none(Spoilt().Image().With(offsetof(Elf64_Ehdr, e_phnum), 2, 0));

  EXPECT_EQ(none.Check().verdict, ElfVerdict::kLoadable);
  EXPECT_EQ(none.AskLoader(), LoaderVerdict::kRefuses);
}

TEST(ElfCheckSegments, ASegmentThatEndsAtAddress0IsLeftToTheDynamicLoaderToRefuse) {
  Spoilt empty(Spoilt().Image().With(offsetof(Elf64_Ehdr, e_phnum), 2, 1));
  empty.Set(0, Elf64_Phdr{PT_LOAD, PF_R, 0, 0, 0, 0, 0, kPage});

  EXPECT_EQ(empty.Check().verdict, ElfVerdict::kLoadable);
  EXPECT_EQ(empty.AskLoader(), LoaderVerdict::kRefuses);
}

TEST(ElfCheckSegments, ALibraryWithoutSectionHeadersIsLoadable) {
  Spoilt library(Spoilt()
                     .Image()
                     .With(offsetof(Elf64_Ehdr, e_shoff), 8, 0)
                     .With(offsetof(Elf64_Ehdr, e_shnum), 2, 0)
                     .With(offsetof(Elf64_Ehdr, e_shstrndx), 2, 0));

  EXPECT_EQ(library.Check().verdict, ElfVerdict::kLoadable);
  EXPECT_EQ(library.AskLoader(), LoaderVerdict::kLoads);
}

// A segment without any bytes, at the end of the library's addresses.
Elf64_Phdr EmptySegment(const Spoilt& library, std::uint64_t offset) {
  const Elf64_Phdr last = library.Segment(library.LastLoad());
  const std::uint64_t end = (last.p_vaddr + last.p_memsz + kPage - 1) / kPage * kPage;
  return {PT_LOAD, PF_R, offset, end, end, 0, 0, kPage};
}

TEST(ElfCheckSegments, AnEmptySegmentMayStandAnywhereInTheFileAndBeyond) {
  Spoilt library;
  library.Set(library.Find(PT_GNU_STACK).front(), EmptySegment(library, std::uint64_t{1} << 40));

  EXPECT_EQ(library.Check().verdict, ElfVerdict::kLoadable);
  EXPECT_EQ(library.AskLoader(), LoaderVerdict::kLoads);
}

// A segment that has no bytes in the file is zeroed from its start to the end of that page, in a page of the file.
TEST(ElfCheckSegments, ASegmentOfZerosThatStartsInAPageBeyondTheEndOfTheFileMeansThatItIsCutShort) {
  const Spoilt whole;
  const std::uint64_t pages = (whole.Size() + kPage - 1) / kPage * kPage;
  struct Row {
    const char* name;
    std::uint64_t offset;
    std::uint64_t inPage;
    ElfVerdict verdict;
    LoaderVerdict loader;
  };
  for (const auto& [name, offset, inPage, verdict, loader] : std::to_array<Row>({
           {"in the last page", pages - kPage, 16, ElfVerdict::kLoadable, LoaderVerdict::kLoads},
           {"in the page after it", pages, 16, ElfVerdict::kCutShort, LoaderVerdict::kCrashes},
           {"far away", std::uint64_t{1} << 40, 16, ElfVerdict::kCutShort, LoaderVerdict::kCrashes},
           {"at the beginning of a page", pages, 0, ElfVerdict::kLoadable, LoaderVerdict::kLoads},
       })) {
    SCOPED_TRACE(name);
    Spoilt library;
    Elf64_Phdr zeros = EmptySegment(library, offset + inPage);
    zeros.p_vaddr += inPage;
    zeros.p_memsz = 64;
    zeros.p_flags = PF_R | PF_W;
    library.Set(library.Find(PT_GNU_STACK).front(), zeros);

    EXPECT_EQ(library.Check().verdict, verdict);
    EXPECT_EQ(library.AskLoader(), loader);
  }
}

// Its page is mapped all the same, over what another segment has there.
TEST(ElfCheckSegments, AnEmptySegmentInAPageBeyondTheEndOfTheFileMeansThatItIsCutShort) {
  constexpr std::uint64_t kBeyond = std::uint64_t{1} << 40;
  Spoilt library;
  Elf64_Phdr empty = EmptySegment(library, kBeyond + 16);
  empty.p_vaddr += 16;
  library.Set(library.Find(PT_GNU_STACK).front(), empty);

  EXPECT_EQ(library.Check().detail, CutShort(kBeyond + 1, library.Size()));
  EXPECT_EQ(library.AskLoader(), LoaderVerdict::kLoads) << "as nothing stands there";
  library.Set(library.Dynamic(), &Elf64_Phdr::p_vaddr, empty.p_vaddr);
  EXPECT_EQ(library.Check().detail, CutShort(kBeyond + 1, library.Size()));
  EXPECT_EQ(library.AskLoader(), LoaderVerdict::kCrashes);
}

// The end of the zeros is too far to be mapped; the dynamic loader writes those of the first page before it finds out.
TEST(ElfCheckSegments, ZerosWithoutAnEndInAPageBeyondTheEndOfTheFileMeanThatItIsCutShort) {
  Spoilt library;
  Elf64_Phdr zeros = EmptySegment(library, (std::uint64_t{1} << 40) + 16);
  zeros.p_vaddr += 16;
  zeros.p_flags = PF_R | PF_W;
  zeros.p_memsz = std::uint64_t{3} << 62;
  const std::size_t last = library.LastLoad();
  library.Set(library.Find(PT_GNU_STACK).front(), library.Segment(last)).Set(last, zeros);

  EXPECT_EQ(library.Check().verdict, ElfVerdict::kCutShort);
  EXPECT_EQ(library.AskLoader(), LoaderVerdict::kCrashes);
}

// Of the header and of every program header, at their places in the file.
std::vector<ElfField> EveryField(const ElfImage& library) {
  std::vector<ElfField> fields(tests::kElfHeaderFields.begin(), tests::kElfHeaderFields.end());
  for (std::size_t i = 0; i < library.Header().e_phnum; ++i) {
    const auto add = [&fields, header = library.Header().e_phoff + i * sizeof(Elf64_Phdr)](const ElfField& field) {
      fields.push_back({field.name, header + field.offset, field.width});
    };
    std::ranges::for_each(tests::kSegmentFields, add);
    std::ranges::for_each(tests::kOtherSegmentFields, add);
  }
  return fields;
}

// Refused on purpose, although the dynamic loader may be lucky with it: it depends on the size of the library.
constexpr std::string_view kOutOfRange = "a segment outside the library's own addresses";

TEST(ElfCheckSegments, OfWholeFilesNothingThatTheDynamicLoaderLoadsIsRefusedButByLuck) {
  const Spoilt library;
  const std::uint64_t size = library.Size();
  int refused = 0;
  for (const auto& [name, offset, width] : EveryField(library.Image())) {
    for (const std::uint64_t value :
         std::to_array<std::uint64_t>({0, 1, 2, 0x40, kPage - 1, kPage, size - 1, size, size + 1, 0x7fffffff,
                                       0x80000000, UINT64_MAX / 2 + 1, UINT64_MAX - kPage, UINT64_MAX})) {
      Spoilt spoilt = library;  // In the same place.
      spoilt.Set(library.Image().With(offset, width, value));
      const ElfFinding finding = spoilt.Check();
      if (!spoilt.Image().IsWhole()) {
        EXPECT_NE(finding.verdict, ElfVerdict::kLoadable) << name << " at " << offset << " set to " << value;
      } else if (finding.verdict != ElfVerdict::kLoadable) {
        ++refused;
        EXPECT_TRUE(spoilt.AskLoader() != LoaderVerdict::kLoads || finding.detail == kOutOfRange)
            << name << " at " << offset << " set to " << value << " was refused: " << finding.detail;
      }
    }
  }
  EXPECT_GE(refused, 50);
}

}  // namespace
}  // namespace netloader
