#include "netloader/netloaderhostfxr/src/elf_check.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <ostream>
#include <string>

#include "tests/netloader/netloaderhostfxr/src/interposed_calls.h"
#include "tests/support/elf_faults.h"
#include "tests/support/elf_image.h"
#include "tests/support/stand_in_host.h"
#include "tests/support/temp_folder.h"

namespace netloader {
namespace {

using tests::ElfImage;

ElfImage Library() {
  return ElfImage(tests::ReadFile(tests::HostLibrary()));
}

// Some bytes as a file, and what is thought of them.
ElfFinding Check(const ElfImage& image) {
  const tests::TempFolder folder;
  const std::string file = folder / "libhostfxr.so";
  tests::WriteFile(file, image.Bytes());
  return CheckElf(file.c_str());
}

TEST(ElfCheck, AWholeLibraryIsLoadableWithoutAReason) {
  const ElfFinding finding = CheckElf(tests::HostLibrary().c_str());

  EXPECT_EQ(finding.verdict, ElfVerdict::kLoadable);
  EXPECT_EQ(finding.detail, "");
}

TEST(ElfCheck, AMissingFileIsUnreadableForTheSystemsReason) {
  const tests::TempFolder folder;

  const ElfFinding finding = CheckElf((folder / "libhostfxr.so").c_str());

  EXPECT_EQ(finding.verdict, ElfVerdict::kUnreadable);
  EXPECT_EQ(finding.detail, "No such file or directory");
}

TEST(ElfCheck, OnlyARegularFileIsRead) {
  const tests::TempFolder folder;
  const std::string fifo = folder / "fifo";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  for (const std::string& path : {folder.Path().string(), fifo, std::string("/dev/zero")}) {
    SCOPED_TRACE(path);
    const tests::CountedReads count;
    ::alarm(60);  // Ends the test should it wait for a writer.
    const ElfFinding finding = CheckElf(path.c_str());
    ::alarm(0);

    EXPECT_EQ(finding.verdict, ElfVerdict::kUnreadable);
    EXPECT_EQ(finding.detail, "not a regular file");
    EXPECT_EQ(count.Reads(), 0);
  }
}

TEST(ElfCheck, AFileWhoseBeginningCannotBeReadIsUnreadableForTheSystemsReason) {
  const tests::FailingRead fault(EIO);

  const ElfFinding finding = CheckElf(tests::HostLibrary().c_str());

  EXPECT_EQ(finding.verdict, ElfVerdict::kUnreadable);
  EXPECT_EQ(finding.detail, "Input/output error");
}

struct HeaderFault {
  const char* name;
  ElfImage image;
  ElfVerdict verdict;
  const char* detail;
};

ElfImage WithField(std::size_t offset, std::size_t width, std::uint64_t value) {
  return Library().With(offset, width, value);
}

TEST(ElfCheck, EveryFaultOfTheHeaderHasItsVerdictAndReason) {
  constexpr const char* kNoElf = "not an ELF file";
  constexpr const char* kOther = "built for another machine or word size";
  constexpr const char* kNotShared = "not a shared object";
  constexpr const char* kOddSize = "program headers of an unknown size";
  const auto faults = std::to_array<HeaderFault>({
      {"empty", ElfImage(""), ElfVerdict::kNotElf, kNoElf},
      {"text", ElfImage("not a library\n"), ElfVerdict::kNotElf, kNoElf},
      {"zeros", ElfImage(std::string(5000, '\0')), ElfVerdict::kNotElf, kNoElf},
      {"a part of the mark", Library().CutTo(3), ElfVerdict::kNotElf, kNoElf},
      {"first byte of the mark", WithField(0, 1, 0x7e), ElfVerdict::kNotElf, kNoElf},
      {"last byte of the mark", WithField(3, 1, 'G'), ElfVerdict::kNotElf, kNoElf},
      {"the mark alone", Library().CutTo(4), ElfVerdict::kCutShort, "cut short: needs at least 64 bytes, has 4"},
      {"one byte less than a header", Library().CutTo(63), ElfVerdict::kCutShort,
       "cut short: needs at least 64 bytes, has 63"},
      {"32 bits", WithField(EI_CLASS, 1, ELFCLASS32), ElfVerdict::kOtherMachine, kOther},
      {"big-endian", WithField(EI_DATA, 1, ELFDATA2MSB), ElfVerdict::kOtherMachine, kOther},
      {"for ARM", WithField(offsetof(Elf64_Ehdr, e_machine), 2, EM_AARCH64), ElfVerdict::kOtherMachine, kOther},
      {"an object file", WithField(offsetof(Elf64_Ehdr, e_type), 2, ET_REL), ElfVerdict::kNotShared, kNotShared},
      {"an executable", WithField(offsetof(Elf64_Ehdr, e_type), 2, ET_EXEC), ElfVerdict::kNotShared, kNotShared},
      {"a core", WithField(offsetof(Elf64_Ehdr, e_type), 2, ET_CORE), ElfVerdict::kNotShared, kNotShared},
      {"program headers of 55 bytes", WithField(offsetof(Elf64_Ehdr, e_phentsize), 2, 55), ElfVerdict::kMalformed,
       kOddSize},
      {"program headers of 57 bytes", WithField(offsetof(Elf64_Ehdr, e_phentsize), 2, 57), ElfVerdict::kMalformed,
       kOddSize},
      {"program headers of no bytes", WithField(offsetof(Elf64_Ehdr, e_phentsize), 2, 0), ElfVerdict::kMalformed,
       kOddSize},
  });
  for (const HeaderFault& fault : faults) {
    SCOPED_TRACE(fault.name);

    const ElfFinding finding = Check(fault.image);

    EXPECT_EQ(finding.verdict, fault.verdict);
    EXPECT_EQ(finding.detail, fault.detail);
  }
}

std::string CutShort(std::uint64_t needed, std::uint64_t size) {
  return "cut short: needs at least " + std::to_string(needed) + " bytes, has " + std::to_string(size);
}

TEST(ElfCheck, ProgramHeadersBeyondTheEndOfTheFileMeanThatItIsCutShort) {
  const ElfImage library = Library();
  const std::uint64_t size = library.Bytes().size();
  const std::uint64_t table = std::uint64_t{library.Header().e_phnum} * sizeof(Elf64_Phdr);
  constexpr std::size_t kOffset = offsetof(Elf64_Ehdr, e_phoff);

  const ElfFinding oneByte = Check(library.With(kOffset, 8, size - table + 1));
  const ElfFinding far = Check(library.With(kOffset, 8, UINT64_MAX - 7));
  const ElfFinding many = Check(library.With(offsetof(Elf64_Ehdr, e_phnum), 2, 0xffff));

  EXPECT_EQ(oneByte.verdict, ElfVerdict::kCutShort);
  EXPECT_EQ(oneByte.detail, CutShort(size + 1, size));
  EXPECT_EQ(far.verdict, ElfVerdict::kCutShort);
  EXPECT_EQ(far.detail, CutShort(UINT64_MAX, size));
  EXPECT_EQ(many.verdict, ElfVerdict::kCutShort);
  EXPECT_EQ(many.detail, CutShort(library.Header().e_phoff + 0xffff * sizeof(Elf64_Phdr), size));
}

TEST(ElfCheck, ALibraryCutAnywhereIsLoadableOnlyWhileAllThatIsMappedIsThere) {
  const ElfImage library = Library();
  int refused = 0;

  for (const std::size_t length : tests::CutLengths(library)) {
    SCOPED_TRACE("cut to " + std::to_string(length));
    const ElfImage cut = library.CutTo(length);
    const ElfFinding finding = Check(cut);
    EXPECT_EQ(finding.verdict == ElfVerdict::kLoadable, cut.IsWhole());
    EXPECT_EQ(finding.detail.empty(), cut.IsWhole());
    refused += cut.IsWhole() ? 0 : 1;
  }

  EXPECT_GE(refused, 150);
}

// The program headers once more, at another place of the file.
ElfImage WithProgramHeadersAt(const ElfImage& image, std::size_t offset) {
  const std::size_t size = image.ProgramHeaders().size() * sizeof(Elf64_Phdr);
  std::string bytes = image.Bytes();
  bytes.resize(std::max(bytes.size(), offset + size));
  bytes.replace(offset, size, image.Bytes(), image.Header().e_phoff, size);
  return ElfImage(bytes).With(offsetof(Elf64_Ehdr, e_phoff), 8, offset);
}

TEST(ElfCheck, AnOrdinaryLibraryTakesOneOpenAndOneRead) {
  const tests::CountedReads count;

  static_cast<void>(CheckElf(tests::HostLibrary().c_str()));

  EXPECT_EQ(count.Opens(), 1);
  EXPECT_EQ(count.Reads(), 1);
}

TEST(ElfCheck, ProgramHeadersWithinTheFirst832BytesTakeOneReadAndOthersTwo) {
  const ElfImage library = Library();
  const std::size_t table = library.ProgramHeaders().size() * sizeof(Elf64_Phdr);
  const auto readsFor = [](const ElfImage& image) {
    const tests::TempFolder folder;
    const std::string file = folder / "libhostfxr.so";
    tests::WriteFile(file, image.Bytes());
    const tests::CountedReads count;
    EXPECT_EQ(CheckElf(file.c_str()).verdict, ElfVerdict::kLoadable);
    EXPECT_EQ(count.Opens(), 1);
    return count.Reads();
  };

  EXPECT_EQ(readsFor(WithProgramHeadersAt(library, 832 - table)), 1);
  EXPECT_EQ(readsFor(WithProgramHeadersAt(library, 832 - table + 1)), 2);
  EXPECT_EQ(readsFor(WithProgramHeadersAt(library, library.Bytes().size())), 2);
}

TEST(ElfCheck, ProgramHeadersAtTheEndOfTheFileAreAsGoodForTheDynamicLoader) {
  const ElfImage library = WithProgramHeadersAt(Library(), Library().Bytes().size());
  const tests::TempFolder folder;
  const std::string file = folder / "libhostfxr.so";
  tests::WriteFile(file, library.Bytes());

  EXPECT_EQ(CheckElf(file.c_str()).verdict, ElfVerdict::kLoadable);
  EXPECT_EQ(tests::AskLoader(file), tests::LoaderVerdict::kLoads);
}

TEST(ElfCheck, ProgramHeadersThatCannotBeReadMakeTheFileUnreadable) {
  const tests::TempFolder folder;
  const std::string file = folder / "libhostfxr.so";
  tests::WriteFile(file, WithProgramHeadersAt(Library(), Library().Bytes().size()).Bytes());
  const tests::FailingRead fault(EIO, 1);

  const ElfFinding finding = CheckElf(file.c_str());

  EXPECT_EQ(finding.verdict, ElfVerdict::kUnreadable);
  EXPECT_EQ(finding.detail, "its program headers cannot be read");
}

TEST(ElfCheck, NothingStaysOpen) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "text", "not a library");
  const auto descriptors = [] {
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return std::distance(begin(entries), end(entries));
  };
  const auto before = descriptors();

  static_cast<void>(CheckElf(tests::HostLibrary().c_str()));
  static_cast<void>(CheckElf((folder / "text").c_str()));
  static_cast<void>(CheckElf((folder / "none").c_str()));

  EXPECT_EQ(descriptors(), before);
}

}  // namespace
}  // namespace netloader
