#include "doctor/examine/assembly/signature.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace doctor {
namespace {

using namespace std::string_literals;

// "1c" for the class in row 1 of the types of other assemblies, "2v" for the value type in row 2.
std::string Shown(const std::vector<NamedType>& types) {
  std::string shown;
  for (const auto& [type, isValue] : types) {
    shown += (shown.empty() ? "" : " ") + std::to_string(type.row) + (isValue ? "v" : "c");
    EXPECT_TRUE(type.IsIn(MetadataTable::kTypeRef));
  }
  return shown;
}

// The types 1 to 4 of other assemblies as a signature names them.
const std::string kOne = "\x12\x05";
const std::string kTwo = "\x11\x09";
const std::string kThree = "\x12\x0d";
const std::string kFour = "\x11\x11";

TEST(Signature, EveryTypeNamesWhatItIsMadeOf) {
  const std::pair<std::string, std::string> rows[] = {
      {"\x08", ""},  // A number.
      {"\x0e", ""},  // A text.
      {"\x1c", ""},  // An object.
      {kOne, "1c"},
      {kTwo, "2v"},
      {"\x12\x80\x05"s, "1c"},          // A row's number of two bytes,
      {"\x12\xc0\x00\x00\x05"s, "1c"},  // of four.
      {"\x0f" + kTwo, "2v"},            // A pointer,
      {"\x10" + kTwo, "2v"},            // a reference,
      {"\x1d" + kOne, "1c"},            // an array,
      {"\x45" + kOne, "1c"},            // one that stays in its place,
      {"\x41" + kOne, "1c"},            // the first behind the fixed ones.
      {"\x1f\x0d" + kOne, "1c"},        // Modifiers say how it is used.
      {"\x20\x0d" + kOne, "1c"},
      {"\x13\x01", ""},  // A type that is put in later.
      {"\x1e\x01", ""},
      {"\x14" + kOne + "\x02\x01\x03\x01\x00"s, "1c"},                   // Two dimensions, a size and a lowest index.
      {"\x15" + kOne + "\x02" + kTwo + kThree, "1c 2v 3c"},              // A generic type, and what is put into it,
      {"\x15" + kTwo + "\x01\x15" + kOne + "\x01" + kFour, "2v 1c 4v"},  // which may be one itself.
      {"\x1b\x00\x02"s + kOne + kTwo + kThree, "1c 2v 3c"},              // A pointer to a function of two parameters.
  };
  for (const auto& [signature, types] : rows) {
    SCOPED_TRACE(testing::PrintToString(signature));

    EXPECT_EQ(Shown(ReadTypeSignature(ByteView(signature))), types);
    const std::string field = "\x06" + signature;
    EXPECT_EQ(Shown(ReadSignature(ByteView(field)).types), types);
    const std::string next = "\x07\x02" + signature + kFour;
    EXPECT_EQ(Shown(ReadSignature(ByteView(next)).types), types.empty() ? "4v" : types + " 4v") << "its end is found";
  }
}

TEST(Signature, AFunctionHasAResultAndParameters) {
  for (const std::string& head : {"\x00\x02"s, "\x20\x02"s, "\x05\x02"s, "\x10\x01\x02"s, "\x30\x03\x02"s}) {
    SCOPED_TRACE(testing::PrintToString(head));
    const std::string bytes = head + kOne + kTwo + kThree;

    const Signature signature = ReadSignature(ByteView(bytes));

    EXPECT_EQ(Shown(signature.types), "1c");
    EXPECT_EQ(Shown(signature.parameters), "2v 3c");
  }
}

TEST(Signature, WhatIsPutIntoAGenericFunctionIsAListOfTypes) {
  const std::string bytes = "\x0a\x02" + kOne + kTwo;

  EXPECT_EQ(Shown(ReadSignature(ByteView(bytes)).types), "1c 2v");
}

TEST(Signature, AnEmptyOneNamesNothing) {
  EXPECT_TRUE(ReadSignature(ByteView("")).types.empty());
  EXPECT_TRUE(ReadSignature(ByteView("")).parameters.empty());
}

TEST(Signature, TypesMayBeNestedInManyWays) {
  std::string arrays = kOne;
  std::string generics = kOne;
  for (int depth = 0; depth < 100; ++depth) {
    arrays = "\x14" + arrays + "\x02\x00\x00"s;
    generics = "\x15" + kTwo + "\x01" + generics;
  }

  EXPECT_EQ(Shown(ReadTypeSignature(ByteView(arrays))), "1c");
  EXPECT_EQ(ReadTypeSignature(ByteView(generics)).size(), 101U);
}

TEST(Signature, OneThatEndsTooSoonOrIsNestedTooDeepThrows) {
  for (const std::string& bytes : {"\x06"s, "\x06\x12"s, "\x07\x02\x08"s, "\x00\x01\x01"s, "\x06\x15\x12\x05\x01"s}) {
    EXPECT_THROW(ReadSignature(ByteView(bytes)), std::out_of_range) << testing::PrintToString(bytes);
  }
  const std::string deep = std::string(1'000'000, '\x1d') + kOne;
  EXPECT_THROW(ReadTypeSignature(ByteView(deep)), std::out_of_range);
  const std::string tooDeep = std::string(101, '\x1d') + kOne;
  EXPECT_THROW(ReadTypeSignature(ByteView(tooDeep)), std::out_of_range);
  const std::string usual = std::string(100, '\x1d') + kOne;
  EXPECT_EQ(Shown(ReadTypeSignature(ByteView(usual))), "1c");
}

}  // namespace
}  // namespace doctor
