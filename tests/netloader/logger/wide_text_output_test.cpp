#include "netloader/logger/wide_text_output.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>

namespace {

template <typename Text>
std::string Streamed(const Text& text) {
  std::ostringstream stream;
  EXPECT_EQ(&::operator<<(stream, text), &stream);
  stream << "|";
  return stream.str();
}

TEST(WideTextOutput, WritesUtf8) {
  EXPECT_EQ(Streamed(L"caf\u00E9: '"), "caf\xC3\xA9: '|");
  EXPECT_EQ(Streamed(std::wstring(L"caf\u00E9")), "caf\xC3\xA9|");
  EXPECT_EQ(Streamed(std::wstring{0xD83D, 0xDE00}), "\xF0\x9F\x98\x80|");
}

TEST(WideTextOutput, ANullTextIsNothingAndTheStreamStaysGood) {
  const wchar_t* const null = nullptr;

  EXPECT_EQ(Streamed(null), "|");
}

TEST(WideTextOutput, ANulEndsTheText) {
  EXPECT_EQ(Streamed(L"shown\0hidden"), "shown|");
  EXPECT_EQ(Streamed(std::wstring(L"shown\0hidden", 12)), "shown|");
}

TEST(WideTextOutput, TextThatDoesNotConvertIsARangeError) {
  const std::wstring lone{'a', 0xDC00};

  EXPECT_THROW(Streamed(lone), std::range_error);
  EXPECT_THROW(Streamed(lone.c_str()), std::range_error);
}

}  // namespace
