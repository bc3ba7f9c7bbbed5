#include "doctor/judge/words/message.h"

#include <gtest/gtest.h>

namespace doctor {
namespace {

TEST(Message, EveryNameInBracesGivesWayToItsValue) {
  struct Row {
    const char* message;
    const char* text;
  };
  const Row rows[] = {
      {"", ""},
      {"plain", "plain"},
      {"{a}", "1"},
      {"{a}{b}", "12"},
      {"x {a} y {b} z", "x 1 y 2 z"},
      {"{b} {b}", "2 2"},
      {"{empty}|", "|"},
      {"{unknown}", "{unknown}"},
      {"{a", "{a"},
      {"a}", "a}"},
      {"{}", "{}"},
      {"{a}}", "1}"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Filled(row.message, {{"a", "1"}, {"b", "2"}, {"empty", ""}}), row.text) << row.message;
  }
}

TEST(Message, ValuesAreTakenAsTheyAre) {
  EXPECT_EQ(Filled("{a}", {{"a", "{b}"}, {"b", "2"}}), "{b}");
}

}  // namespace
}  // namespace doctor
