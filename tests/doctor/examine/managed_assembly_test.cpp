#include "doctor/examine/managed_assembly.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/assembly_image.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

void Put(std::string& bytes, std::size_t at, std::uint64_t value, std::size_t size) {
  for (std::size_t byte = 0; byte < size; ++byte) {
    bytes.at(at + byte) = static_cast<char>(value >> (8 * byte) & 0xff);
  }
}

// An assembly "app" whose first function calls a method of a type of "Needed"; "Other" is named as well. All that lies
// in the section from file offset 512 on, address 0x2000.
std::string AppImage(std::uint32_t entryPoint = 0x06000001) {
  std::string bytes = tests::AssemblyImage().bytes;
  constexpr std::size_t kCli = 512 + 8;
  Put(bytes, kCli + 8, 0x2060, 4);
  Put(bytes, kCli + 12, 300, 4);
  Put(bytes, kCli + 20, entryPoint, 4);
  Put(bytes, 512 + 0x50, 6 << 2 | 2, 1);  // A body of six bytes: call MemberRef 1, return.
  Put(bytes, 512 + 0x51, 0x28, 1);
  Put(bytes, 512 + 0x52, 0x0a000001, 4);
  Put(bytes, 512 + 0x56, 0x2a, 1);
  constexpr std::size_t kRoot = 512 + 0x60;
  bytes.replace(kRoot, 4, "BSJB");
  Put(bytes, kRoot + 12, 4, 4);
  Put(bytes, kRoot + 20 + 2, 2, 2);  // Two streams.
  constexpr std::size_t kTables = 64;
  constexpr std::size_t kTexts = 240;
  Put(bytes, kRoot + 24, kTables, 4);
  Put(bytes, kRoot + 28, kTexts - kTables, 4);
  bytes.replace(kRoot + 32, 3, std::string("#~\0", 3));
  Put(bytes, kRoot + 36, kTexts, 4);
  Put(bytes, kRoot + 40, 40, 4);
  bytes.replace(kRoot + 44, 9, std::string("#Strings\0", 9));
  bytes.replace(kRoot + kTexts, 18, std::string("\0app\0Needed\0Other\0", 18));
  constexpr std::size_t kStream = kRoot + kTables;
  constexpr std::uint64_t kPresent = 1ULL << 1 | 1ULL << 6 | 1ULL << 0xa | 1ULL << 0x20 | 1ULL << 0x23;
  Put(bytes, kStream + 8, kPresent, 8);
  constexpr std::size_t kCounts = kStream + 24;
  for (const std::size_t table : {0, 1, 2, 3}) {
    Put(bytes, kCounts + 4 * table, 1, 4);
  }
  Put(bytes, kCounts + 16, 2, 4);
  std::size_t row = kCounts + 20;
  Put(bytes, row, 1 << 2 | 2, 2);  // TypeRef: its scope is AssemblyRef 1.
  row += 6;
  Put(bytes, row, 0x2050, 4);  // MethodDef: where its body is.
  row += 14;
  Put(bytes, row, 1 << 3 | 1, 2);  // MemberRef: its parent is TypeRef 1.
  row += 6;
  Put(bytes, row + 18, 1, 2);  // Assembly: its name.
  row += 22;
  Put(bytes, row + 14, 5, 2);  // AssemblyRefs: their names.
  Put(bytes, row + 20 + 14, 12, 2);
  return bytes;
}

std::optional<ManagedAssembly> Read(const std::string& bytes) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "a.dll", bytes);
  return ReadManagedAssembly(folder / "a.dll");
}

TEST(ManagedAssembly, NameReferencesAndWhatTheFirstFunctionNamesAreRead) {
  const auto read = Read(AppImage());

  ASSERT_TRUE(read);
  EXPECT_EQ(read->name, "app");
  EXPECT_TRUE(read->has_entry_point);
  EXPECT_EQ(read->references, (std::vector<std::string>{"Needed", "Other"}));
  EXPECT_EQ(read->first_needed, std::vector<std::string>{"Needed"});
}

TEST(ManagedAssembly, ALibraryHasNoFirstFunction) {
  const auto read = Read(AppImage(0));

  ASSERT_TRUE(read);
  EXPECT_FALSE(read->has_entry_point);
  EXPECT_TRUE(read->first_needed.empty());
}

TEST(ManagedAssembly, WhatIsNoneOrContradictsItselfIsNotRead) {
  EXPECT_FALSE(ReadManagedAssembly("/no/such/a.dll"));
  EXPECT_FALSE(ReadManagedAssembly("/tmp"));
  EXPECT_FALSE(Read(""));
  EXPECT_FALSE(Read("hello"));
  EXPECT_FALSE(Read(tests::AssemblyImage().bytes));
  EXPECT_FALSE(Read(AppImage(0x06000002))) << "there is no such function";
}

TEST(ManagedAssembly, NoBytesWhateverLeadItAstray) {
  const std::string sound = AppImage();
  for (std::size_t at = 0; at < sound.size(); at += 3) {
    std::string spoilt = sound;
    spoilt[at] = static_cast<char>(0xff);
    Read(spoilt);
    Read(sound.substr(0, at));
  }
}

}  // namespace
}  // namespace doctor
