#include "doctor/examine/machine/build_id.h"

#include <elf.h>
#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

using namespace std::string_literals;

template <typename Header>
std::string BytesOf(const Header& header) {
  std::string bytes(sizeof header, '\0');
  std::memcpy(bytes.data(), &header, sizeof header);
  return bytes;
}

std::string Note(Elf64_Word type, const std::string& owner, const std::string& words) {
  return BytesOf(Elf64_Nhdr{static_cast<Elf64_Word>(owner.size()), static_cast<Elf64_Word>(words.size()), type}) +
         owner + words;
}

// A file with one segment of notes, which says that it is so long.
std::string WithNotes(const std::string& notes, std::size_t size) {
  Elf64_Ehdr header{};
  std::memcpy(header.e_ident, ELFMAG, SELFMAG);
  header.e_ident[EI_CLASS] = ELFCLASS64;
  header.e_phoff = sizeof header;
  header.e_phnum = 1;
  Elf64_Phdr segment{};
  segment.p_type = PT_NOTE;
  segment.p_offset = sizeof header + sizeof segment;
  segment.p_filesz = size;
  return BytesOf(header) + BytesOf(segment) + notes;
}

std::string IdOf(const std::string& bytes) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "library.so", bytes);
  return BuildId(folder / "library.so");
}

const std::string kGnu("GNU\0", 4);

TEST(BuildId, IsInTheNotes) {
  const std::string notes =
      Note(NT_GNU_ABI_TAG, kGnu, std::string(16, 'x')) + Note(NT_GNU_BUILD_ID, kGnu, "\x01\xab\xff\x10");

  EXPECT_EQ(IdOf(WithNotes(notes, notes.size())), "01abff10");
}

TEST(BuildId, StandsBehindNotesThatFillUpFourBytes) {
  const std::string filled = Note(7, "Owner", "12345678");
  const std::string notes = filled.substr(0, sizeof(Elf64_Nhdr) + 5) + "\0\0\0"s + "12345678" +
                            Note(NT_GNU_BUILD_ID, kGnu, "\x01\xab\xff\x10");
  const std::string unfilled = Note(7, kGnu, "12345") + "\0\0\0"s + Note(NT_GNU_BUILD_ID, kGnu, "\x0a");

  EXPECT_EQ(IdOf(WithNotes(notes, notes.size())), "01abff10");
  EXPECT_EQ(IdOf(WithNotes(unfilled, unfilled.size())), "0a");
}

TEST(BuildId, IsReadFromSixtyFourKibibytesOfNotesAndNotFromMore) {
  const std::string note = Note(NT_GNU_BUILD_ID, kGnu, "abcd");
  constexpr std::size_t kMost = 65536;
  const std::string notes = note + std::string(kMost, '\0');

  EXPECT_EQ(IdOf(WithNotes(notes, kMost)), "61626364");
  EXPECT_EQ(IdOf(WithNotes(notes, kMost + 1)), "");
}

TEST(BuildId, OfALibraryOf32BitsIsNone) {
  const std::string note = Note(NT_GNU_BUILD_ID, kGnu, "abcd");
  std::string bytes = WithNotes(note, note.size());
  bytes[EI_CLASS] = ELFCLASS32;

  EXPECT_EQ(IdOf(bytes), "");
}

TEST(BuildId, OfAnotherOwnerIsNone) {
  const std::string notes = Note(NT_GNU_BUILD_ID, std::string("Go\0\0", 4), "abcd");

  EXPECT_EQ(IdOf(WithNotes(notes, notes.size())), "");
}

TEST(BuildId, ThereIsNoneInAFileThatIsDamaged) {
  const std::string whole = Note(NT_GNU_BUILD_ID, kGnu, "abcd");
  for (const std::string& bytes :
       {std::string(), std::string("text"), WithNotes(whole, whole.size()).substr(0, 70),
        WithNotes(whole.substr(0, whole.size() - 1), whole.size()), WithNotes(whole, ~std::size_t{0}),
        WithNotes(BytesOf(Elf64_Nhdr{0xFFFFFFFF, 0xFFFFFFFF, NT_GNU_BUILD_ID}), 100)}) {
    EXPECT_EQ(IdOf(bytes), "") << bytes.size();
  }
  EXPECT_EQ(BuildId("/nothing/there"), "");
}

}  // namespace
}  // namespace doctor
