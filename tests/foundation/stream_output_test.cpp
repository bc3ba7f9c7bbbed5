#include "foundation/stream_output.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace tov::types {
namespace {

std::string Streamed(const WideString& text) {
  std::ostringstream stream;
  stream << "[" << text << "]";
  EXPECT_TRUE(stream.good());
  return stream.str();
}

TEST(StreamOutput, WritesUtf8) {
  EXPECT_EQ(Streamed(u"/opt/caf\u00E9/\U0001F600"), "[/opt/caf\xC3\xA9/\xF0\x9F\x98\x80]");
}

TEST(StreamOutput, ATextThatDoesNotConvertIsWrittenAsNothing) {
  EXPECT_EQ(Streamed(WideString{u'a', char16_t{0xD800}, u'b'}), "[]");
}

TEST(StreamOutput, ANulIsWrittenLikeAnyCharacter) {
  EXPECT_EQ(Streamed(WideString(u"a\0b", 3)), std::string("[a\0b]", 5));
}

TEST(StreamOutput, ReturnsTheStream) {
  std::ostringstream stream;

  EXPECT_EQ(&(stream << WideString(u"x")), &stream);
}

}  // namespace
}  // namespace tov::types
