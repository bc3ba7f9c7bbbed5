#include "doctor/child/answer.h"

#include <gtest/gtest.h>

#include "doctor/child/shared_text.h"

namespace doctor {
namespace {

using namespace std::string_literals;

TEST(Answer, ComesBackAsItWas) {
  for (const ChildEnd end : {ChildEnd::kFinished, ChildEnd::kThrew, ChildEnd::kThrewUnknown}) {
    for (const Answer& texts : {Answer{}, Answer{""}, Answer{"a", "", "b\n"}}) {
      const auto decoded = Decode(Encode({end, texts}));

      ASSERT_TRUE(decoded);
      EXPECT_EQ(decoded->end, end);
      EXPECT_EQ(decoded->texts, texts);
    }
  }
}

TEST(Answer, HasRoomForTheEndOfEachTextHoweverLongTheyAre) {
  const std::string bytes = Encode({ChildEnd::kFinished, {std::string(SharedText::kLongest, 'x'), "lost", "lost"}});

  EXPECT_LE(bytes.size(), SharedText::kLongest);
  EXPECT_EQ(Decode(bytes)->texts.size(), 3U);
}

TEST(Answer, BytesThatAreNoneSayNothing) {
  for (const std::string& bytes : {""s, "finished"s, "finished\0text"s, "\0"s, "ended\0"s, "x"s, "\0x"s}) {
    EXPECT_FALSE(Decode(bytes)) << bytes;
  }
}

}  // namespace
}  // namespace doctor
