#include "doctor/examine/assembly/managed_assembly.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iomanip>
#include <string>
#include <utility>

#include "tests/support/assembly_image.h"
#include "tests/support/managed_image.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

using namespace std::string_literals;
using tests::ManagedImage;
using Names = std::vector<std::string>;

std::optional<ManagedAssembly> Read(const std::string& bytes) {
  static const tests::TempFolder folder;  // One for thousands of calls: to remove one may take milliseconds.
  tests::WriteFile(folder / "a.dll", bytes);
  return ReadManagedAssembly(folder / "a.dll");
}

// What the first function names when it has this code.
Names NeededBy(const std::string& code) {
  ManagedImage image;
  image.code = code;
  return Read(image.Bytes()).value().first_needed;
}

TEST(ManagedAssembly, NameReferencesAndWhatTheFirstFunctionNamesAreRead) {
  const auto read = Read(ManagedImage().Bytes());

  ASSERT_TRUE(read);
  EXPECT_EQ(read->name, "app");
  EXPECT_TRUE(read->has_entry_point);
  EXPECT_EQ(read->references, (Names{"Needed", "Other"}));
  EXPECT_EQ(read->first_needed, Names{"Needed"});
}

TEST(ManagedAssembly, ALibraryHasNoFirstFunction) {
  ManagedImage image;
  image.entry_point = 0;

  const auto read = Read(image.Bytes());

  ASSERT_TRUE(read);
  EXPECT_FALSE(read->has_entry_point);
  EXPECT_TRUE(read->first_needed.empty());
}

TEST(ManagedAssembly, BothKindsOfHeadersAreRead) {
  ManagedImage wide;
  wide.has_wide_addresses = true;
  ManagedImage fat;
  fat.has_fat_header = true;

  EXPECT_EQ(Read(wide.Bytes()).value().first_needed, Names{"Needed"});
  EXPECT_EQ(Read(fat.Bytes()).value().first_needed, Names{"Needed"});
}

// The instructions that something follows, by its length; ECMA-335, partition III.
struct Instructions {
  unsigned int first, last;
  std::size_t length;
  bool names_something;
};

constexpr Instructions kInstructions[] = {
    {0x0e, 0x13, 1, false},     {0x1f, 0x1f, 1, false},     {0x20, 0x20, 4, false},    {0x21, 0x21, 8, false},
    {0x22, 0x22, 4, false},     {0x23, 0x23, 8, false},     {0x27, 0x28, 4, true},     {0x29, 0x29, 4, false},
    {0x2b, 0x37, 1, false},     {0x38, 0x44, 4, false},     {0x6f, 0x71, 4, true},     {0x72, 0x72, 4, false},
    {0x73, 0x75, 4, true},      {0x79, 0x79, 4, true},      {0x7b, 0x81, 4, true},     {0x8c, 0x8d, 4, true},
    {0x8f, 0x8f, 4, true},      {0xa3, 0xa5, 4, true},      {0xc2, 0xc2, 4, true},     {0xc6, 0xc6, 4, true},
    {0xd0, 0xd0, 4, true},      {0xdd, 0xdd, 4, false},     {0xde, 0xde, 1, false},    {0xfe06, 0xfe07, 4, true},
    {0xfe09, 0xfe0e, 2, false}, {0xfe12, 0xfe12, 1, false}, {0xfe15, 0xfe16, 4, true}, {0xfe19, 0xfe19, 1, false},
    {0xfe1c, 0xfe1c, 4, true},
};

// What follows the instruction: how many bytes, and whether they name something.
std::pair<std::size_t, bool> BehindInstruction(unsigned int number) {
  for (const auto& [first, last, length, namesSomething] : kInstructions) {
    if (number >= first && number <= last) {
      return {length, namesSomething};
    }
  }
  return {0, false};
}

std::string Instruction(unsigned int number) {
  return (number > 0xff ? ManagedImage::Number(number >> 8, 1) : "") + ManagedImage::Number(number & 0xff, 1);
}

TEST(ManagedAssembly, EveryInstructionIsPassedOverWithWhatFollowsIt) {
  constexpr unsigned int kSwitch = 0x45;
  constexpr unsigned int kPrefix = 0xfe;
  for (unsigned int number = 0; number <= 0xfe1e; number += number == 0xff ? 0xfe00 - 0xff : 1) {
    if (number == kSwitch || number == kPrefix) {
      continue;
    }
    SCOPED_TRACE(testing::Message() << std::hex << number);
    const auto [length, namesSomething] = BehindInstruction(number);
    // Each byte is an instruction that four bytes follow, so that one byte too few or too many hides the call.
    const std::string follows(length, '\x20');

    EXPECT_EQ(NeededBy(Instruction(number) + follows + ManagedImage::Call(ManagedImage::kMemberRef)), Names{"Needed"});
    if (length == 4) {
      EXPECT_EQ(!NeededBy(Instruction(number) + ManagedImage::Number(ManagedImage::kMemberRef, 4)).empty(),
                namesSomething);
    }
  }
}

TEST(ManagedAssembly, ATableOfJumpsIsPassedOverWithItsPlaces) {
  for (const std::size_t places : {0U, 1U, 5U}) {
    const std::string table = "\x45" + ManagedImage::Number(places, 4) + std::string(4 * places, '\x20');

    EXPECT_EQ(NeededBy(table + ManagedImage::Call(ManagedImage::kMemberRef)), Names{"Needed"}) << places;
  }
}

TEST(ManagedAssembly, AMethodIsOfTheAssemblyOfItsType) {
  for (const std::uint32_t name : {ManagedImage::kTypeRef, ManagedImage::kMemberRef, ManagedImage::kMethodSpec}) {
    EXPECT_EQ(NeededBy(ManagedImage::Call(name)), Names{"Needed"}) << std::hex << name;
  }
  EXPECT_EQ(NeededBy(ManagedImage::Call(0x06000001)), Names()) << "it is the assembly's own";
}

TEST(ManagedAssembly, WhatIsNamedTwiceIsNeededOnce) {
  const std::string call = ManagedImage::Call(ManagedImage::kMemberRef);

  EXPECT_EQ(NeededBy(call + call), Names{"Needed"});
}

TEST(ManagedAssembly, ATypeMadeOfAnotherIsOfItsAssembly) {
  const std::pair<std::string, Names> rows[] = {
      {"\x12\x05"s, {"Needed"}},                  // A class.
      {"\x11\x05"s, {"Needed"}},                  // A value.
      {"\x15\x12\x05\x01\x0e"s, {"Needed"}},      // A generic one,
      {"\x1d\x12\x05"s, {"Needed"}},              // an array,
      {"\x14\x12\x05\x02\x00\x00"s, {"Needed"}},  // one of more dimensions,
      {"\x0f\x11\x05"s, {"Needed"}},              // a pointer,
      {"\x10\x12\x05"s, {"Needed"}},              // a reference,
      {"\x45\x12\x05"s, {"Needed"}},              // one that stays in its place,
      {"\x1d\x15\x12\x05\x01\x0e"s, {"Needed"}},  // and more than one of these.
      {"\x12\x80\x05"s, {"Needed"}},              // Its number may stand in two bytes,
      {"\x12\xc0\x00\x00\x05"s, {"Needed"}},      // or in four.
      {"\x1d\x13\x05"s, {}},                      // A type that is put in later.
      {"\x0e\x05"s, {}},                          // A text.
  };
  for (const auto& [type, needed] : rows) {
    SCOPED_TRACE(testing::PrintToString(type));
    ManagedImage image;
    image.type = type;

    EXPECT_EQ(Read(image.Bytes()).value().first_needed, needed);
    image.code = ManagedImage::Call(ManagedImage::kTypeSpec);
    EXPECT_EQ(Read(image.Bytes()).value().first_needed, needed);
  }
}

TEST(ManagedAssembly, ATypeThatLiesInItselfIsOfNoAssembly) {
  ManagedImage image;
  image.scope = 1 << 2 | 3;

  EXPECT_EQ(Read(image.Bytes()).value().first_needed, Names());
}

TEST(ManagedAssembly, WhatIsNoneOrContradictsItselfIsNotRead) {
  ManagedImage image;
  image.entry_point = 0x06000002;

  EXPECT_FALSE(ReadManagedAssembly("/no/such/a.dll"));
  EXPECT_FALSE(ReadManagedAssembly("/tmp"));
  EXPECT_FALSE(Read(""));
  EXPECT_FALSE(Read("hello"));
  EXPECT_FALSE(Read(tests::AssemblyImage().bytes));
  EXPECT_FALSE(Read(image.Bytes())) << "there is no such function";
}

// It is not known to be one, whatever it looks like.
TEST(ManagedAssembly, WhatLiesBehindTheLastSectionsRowIsNoSection) {
  using Header = tests::AssemblyImage;
  const auto bytes = [](std::uint16_t sections) {
    Header image;
    image.bytes = ManagedImage().Bytes();
    image.Put32(Header::kCliDirectory, 0x6008).Put16(Header::kSectionCount, sections);
    constexpr std::size_t kSecond = Header::kSection + 40;
    image.Put32(kSecond + 12, 0x6000).Put32(kSecond + 16, 512).Put32(kSecond + 20, 512);
    return image.bytes;
  };

  EXPECT_TRUE(Read(bytes(2)));
  EXPECT_FALSE(Read(bytes(1)));
}

TEST(ManagedAssembly, NoBytesWhateverLeadItAstray) {
  const std::string sound = ManagedImage().Bytes();
  for (std::size_t at = 0; at < sound.size(); at += 3) {
    std::string spoilt = sound;
    spoilt[at] = static_cast<char>(0xff);
    Read(spoilt);
    Read(sound.substr(0, at));
  }
}

// The kernel gives a page as the size of each of these files.
TEST(ManagedAssembly, AFileThatEndsBeforeItsSizeIsNone) {
  const std::string file = "/sys/kernel/uevent_seqnum";
  std::error_code error;
  if (std::filesystem::file_size(file, error) < 2 || error) {
    GTEST_SKIP() << "no such file is here";
  }

  EXPECT_FALSE(ReadManagedAssembly(file));
}

}  // namespace
}  // namespace doctor
