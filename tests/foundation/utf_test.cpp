#include "foundation/utf.h"

#include <gtest/gtest.h>

namespace tov::text {
namespace {

TEST(Utf, TheTwoConversionsAreEachOthersInverse) {
  for (const std::u16string_view text : {u"", u"plain", u"a\u00e4\u20ac\U0001F600z"}) {
    EXPECT_EQ(ToUtf16(ToUtf8(text)), text);
  }
  EXPECT_EQ(ToUtf8(u"a\u20ac\U0001F600"), "a\u20ac\U0001F600");
  EXPECT_EQ(ToUtf16("a\u20ac\U0001F600"), u"a\u20ac\U0001F600");
}

TEST(Utf, ALoneSurrogateHasThreeBytes) {
  EXPECT_EQ(ToUtf8(WideString(1, char16_t{0xD800})), "\xed\xa0\x80");
}

TEST(Utf, MalformedBytesHaveNoText) {
  EXPECT_EQ(ToUtf16("a\xff"), u"");
  EXPECT_EQ(ToUtf16("a\xe2\x82"), u"");
}

TEST(Utf, ANulIsACharacterLikeAnyOther) {
  EXPECT_EQ(ToUtf8(std::u16string_view(u"a\0b", 3)), std::string_view("a\0b", 3));
  EXPECT_EQ(ToUtf16(std::string_view("a\0b", 3)), std::u16string_view(u"a\0b", 3));
}

}  // namespace
}  // namespace tov::text
