#include "doctor/examine/assembly/pe_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>

#include "tests/support/assembly_image.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

using tests::AssemblyImage;

PeFinding CheckBytes(std::string_view bytes) {
  static const tests::TempFolder folder;  // One for thousands of calls: to remove one may take milliseconds.
  tests::WriteFile(folder / "a.dll", bytes);
  return CheckPe((folder / "a.dll").c_str());
}

TEST(PeFile, AnAssemblyForAnyMachineOrX64IsSound) {
  // The last one is precompiled for Linux.
  for (const std::uint16_t machine : std::initializer_list<std::uint16_t>{0x14c, 0x8664, 0x8664 ^ 0x7b79}) {
    const PeFinding finding = CheckBytes(AssemblyImage().Put16(AssemblyImage::kMachine, machine).bytes);

    EXPECT_EQ(finding.verdict, PeVerdict::kSound) << machine;
    EXPECT_EQ(finding.detail, "");
  }
}

// Precompiled ones are such. The directories stand 16 bytes further on, and so does all behind them.
TEST(PeFile, AnAssemblyWhoseOptionalHeaderHas64BitFieldsIsSound) {
  constexpr std::size_t kOptionalHeader = AssemblyImage::kHeader + 24;
  AssemblyImage image;
  image.Put16(kOptionalHeader - 4, 240).Put16(kOptionalHeader, 0x20b);
  image.bytes.insert(kOptionalHeader + 96, 16, '\0').erase(496, 16);

  EXPECT_EQ(CheckBytes(image.bytes).verdict, PeVerdict::kSound);
}

TEST(PeFile, WhatIsNoAssemblyIsRefusedWithItsReason) {
  struct Row {
    PeVerdict verdict;
    const char* detail;
    std::function<void(AssemblyImage& image)> spoil;
  };
  const Row rows[] = {
      {PeVerdict::kNotManaged, "empty", [](AssemblyImage& image) { image.bytes.clear(); }},
      {PeVerdict::kNotManaged, "not a .NET assembly", [](AssemblyImage& image) { image.bytes = "hello\n"; }},
      {PeVerdict::kNotManaged, "not a .NET assembly",
       [](AssemblyImage& image) { image.bytes.at(AssemblyImage::kHeader) = 'N'; }},
      {PeVerdict::kNotManaged, "not a .NET assembly",
       [](AssemblyImage& image) { image.Put16(AssemblyImage::kSectionCount, 0xffff); }},
      {PeVerdict::kNotManaged, "a program without .NET code",
       [](AssemblyImage& image) { image.Put32(AssemblyImage::kCliDirectory, 0); }},
      {PeVerdict::kNotManaged, "its CLI header lies outside of its sections",
       [](AssemblyImage& image) { image.Put32(AssemblyImage::kCliDirectory, 0x2200); }},
      {PeVerdict::kNotManaged, "its CLI header lies outside of its sections",
       [](AssemblyImage& image) { image.Put16(AssemblyImage::kSectionCount, 0); }},
      {PeVerdict::kOtherMachine, "built for another machine",
       [](AssemblyImage& image) { image.Put16(AssemblyImage::kMachine, 0xaa64); }},
      {PeVerdict::kCutShort, "cut short: 1024 bytes, at least 4294967319 are needed",
       [](AssemblyImage& image) { image.Put32(0x3c, 0xffffffff); }},
      {PeVerdict::kCutShort, "cut short: 1024 bytes, at least 4294967807 are needed",
       [](AssemblyImage& image) { image.Put32(AssemblyImage::kSection + 16, 0xffffffff); }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.detail);
    AssemblyImage image;
    row.spoil(image);

    const PeFinding finding = CheckBytes(image.bytes);

    EXPECT_EQ(finding.verdict, row.verdict);
    EXPECT_EQ(finding.detail, row.detail);
  }
}

TEST(PeFile, AnAssemblyCutAnywhereIsRefused) {
  const std::string whole = AssemblyImage().bytes;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_NE(CheckBytes(whole.substr(0, length)).verdict, PeVerdict::kSound) << length;
  }
}

TEST(PeFile, AMissingFileIsNotAnUnreadableOne) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "file", "");
  ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0600), 0);

  EXPECT_EQ(CheckPe((folder / "none").c_str()).verdict, PeVerdict::kMissing);
  EXPECT_EQ(CheckPe((folder / "file/none").c_str()).verdict, PeVerdict::kMissing);
  EXPECT_EQ(CheckPe(folder.Path().c_str()).verdict, PeVerdict::kUnreadable);
  EXPECT_EQ(CheckPe((folder / "fifo").c_str()).verdict, PeVerdict::kUnreadable) << "and nobody waits for a writer";
}

}  // namespace
}  // namespace doctor
