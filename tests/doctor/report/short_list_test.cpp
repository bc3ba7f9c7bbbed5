#include "doctor/report/short_list.h"

#include <gtest/gtest.h>

namespace doctor {
namespace {

TEST(ShortList, NamesEachNameOnce) {
  ShortList list;
  EXPECT_EQ(list.Text(), "");

  for (const char* name : {"line 10", "line 1", "", "line 10", "line 1"}) {
    list.Add(name);
  }

  EXPECT_EQ(list.Text(), "line 10, line 1");
}

TEST(ShortList, OfManyOnlyTheFirstTenAreNamed) {
  ShortList list;

  for (const char* name : {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "b"}) {
    list.Add(name);
  }

  EXPECT_EQ(list.Text(), "a, b, c, d, e, f, g, h, i, j and more");
}

}  // namespace
}  // namespace doctor
