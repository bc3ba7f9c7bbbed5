#include "doctor/examine/assembly/code.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "tests/support/managed_image.h"

namespace doctor {
namespace {

using namespace std::string_literals;
using tests::ManagedImage;

constexpr std::uint32_t kCaught = 0x01000007;
constexpr std::uint32_t kOther = 0x01000008;

std::string Fat(std::uint16_t flags, const std::string& code, std::uint32_t locals = 0) {
  return ManagedImage::Number(0x3003U | flags, 2) + ManagedImage::Number(8, 2) + ManagedImage::Number(code.size(), 4) +
         ManagedImage::Number(locals, 4) + code;
}

std::string SmallClause(std::uint16_t kind, std::uint32_t type) {
  return ManagedImage::Number(kind, 2) + std::string(6, '\x01') + ManagedImage::Number(type, 4);
}

std::string FatClause(std::uint32_t kind, std::uint32_t type) {
  return ManagedImage::Number(kind, 4) + std::string(16, '\x01') + ManagedImage::Number(type, 4);
}

std::string Section(std::uint8_t kind, const std::string& clauses) {
  return ManagedImage::Number(kind, 1) + ManagedImage::Number(clauses.size() + 4, 3) + clauses;
}

std::string Named(const std::string& body) {
  std::string named;
  for (const MetadataRow& row : ReadBody(ByteView(body), 0).named) {
    named += (named.empty() ? "" : " ") + std::to_string(row.table) + ":" + std::to_string(row.row);
  }
  return named;
}

TEST(Code, AShortBodyHasNoLocals) {
  const std::string code = ManagedImage::Call(0x0a000003);
  const std::string body = static_cast<char>(code.size() << 2 | 2) + code;

  EXPECT_EQ(Named(body), "10:3");
  EXPECT_EQ(ReadBody(ByteView(body), 0).locals.row, 0U);
}

TEST(Code, ALongBodyNamesItsLocals) {
  const FunctionBody body = ReadBody(ByteView(Fat(0, ManagedImage::Call(0x0a000003), 0x11000005)), 0);

  EXPECT_EQ(body.named.size(), 1U);
  EXPECT_TRUE(body.locals.IsIn(MetadataTable::kStandAloneSig));
  EXPECT_EQ(body.locals.row, 5U);
}

TEST(Code, TypesOfExceptionsThatAreCaughtAreNamed) {
  // Behind code of four bytes nothing is left free up to the section.
  const std::string code(4, '\0');
  const std::string small = Section(0x01, SmallClause(0, kCaught) + SmallClause(2, kOther));
  const std::string fat = Section(0x41, FatClause(2, kOther) + FatClause(0, kCaught));

  EXPECT_EQ(Named(Fat(8, code) + small), "1:7");
  EXPECT_EQ(Named(Fat(8, code) + fat), "1:7");
  EXPECT_EQ(Named(Fat(0, code) + small), "") << "the header says that there is none";
  EXPECT_EQ(Named(Fat(8, code) + Section(0x02, SmallClause(0, kCaught))), "") << "it is of another kind";
}

TEST(Code, SectionsBeginAtMultiplesOfFourAndMayFollowEachOther) {
  for (const std::size_t size : {1U, 2U, 3U, 4U, 5U}) {
    SCOPED_TRACE(size);
    std::string body = Fat(8, std::string(size, '\0'));
    body.resize((body.size() + 3) / 4 * 4);

    EXPECT_EQ(Named(body + Section(0x81, SmallClause(0, kCaught)) + Section(0x41, FatClause(0, kOther))), "1:7 1:8");
  }
}

TEST(Code, ASectionEndsWhereItSaysAlthoughNoWholeClauseFits) {
  const std::string rest(8, '\0');
  const std::string body = Fat(8, std::string(4, '\0')) + Section(0x81, SmallClause(0, kCaught) + rest);

  EXPECT_EQ(Named(body + Section(0x81, rest) + Section(0x41, FatClause(0, kOther))), "1:7 1:8");
}

TEST(Code, ABodyThatGoesBeyondTheEndThrows) {
  const std::string body = Fat(8, std::string(4, '\0')) + Section(0x01, SmallClause(0, kCaught));
  for (std::size_t size = 0; size < body.size(); ++size) {
    EXPECT_THROW(ReadBody(ByteView(body.substr(0, size)), 0), std::out_of_range) << size;
  }
}

}  // namespace
}  // namespace doctor
