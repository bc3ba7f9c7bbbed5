#include "foundation/path.h"

#include <gtest/gtest.h>

namespace tov::filesystem::detail {
namespace {

TEST(Path, AppendPutsOneSeparatorBetweenUnlessThereIsOneOrNoPath) {
  struct Row {
    WideString path;
    WideString tail;
    WideString joined;
  };
  for (const Row& row :
       {Row{u"/opt", u"x", u"/opt/x"}, Row{u"/opt/", u"x", u"/opt/x"}, Row{u"", u"x", u"x"}, Row{u"/opt", u"", u"/opt"},
        Row{u"/opt", u"/x", u"/opt//x"}, Row{u"/", u"x", u"/x"}, Row{u"", u"", u""}, Row{u"", u"/x", u"/x"},
        Row{u"/opt/", u"", u"/opt/"}, Row{u"/opt//", u"x", u"/opt//x"}, Row{u"a\\", u"b", u"a\\/b"}}) {
    WideString path = row.path;

    WideString& result = PathImplBase::PathAppend(path, row.tail);

    EXPECT_EQ(&result, &path);
    EXPECT_TRUE(path == row.joined) << testing::PrintToString(row.path) << " + " << testing::PrintToString(row.tail);
  }
}

TEST(Path, APathCanBeAppendedToItself) {
  for (const WideString& start : {WideString(u"/a"), WideString(u"/a/"), WideString(u"/long/enough/for/the/heap")}) {
    WideString path = start;

    PathImplBase::PathAppend(path, path);

    WideString twice = start;
    twice.append(start.back() == u'/' ? u"" : u"/").append(start);
    EXPECT_TRUE(path == twice) << testing::PrintToString(start);
  }
}

TEST(Path, AppendGrowsOnce) {
  const WideString tail(100, u't');
  WideString path(100, u'p');

  PathImplBase::PathAppend(path, tail);

  WideString once(100, u'p');
  once.reserve(201);
  EXPECT_EQ(path.capacity(), once.capacity());
}

TEST(Path, AddLastSeparatorMakesThePathEndWithOne) {
  struct Row {
    WideString path;
    WideString ended;
  };
  for (const Row& row : {Row{u"/opt", u"/opt/"}, Row{u"/opt/", u"/opt/"}, Row{u"", u"/"}, Row{u"/", u"/"}}) {
    WideString path = row.path;

    WideString& result = PathImplBase::PathAddLastSeparator(path);

    EXPECT_EQ(&result, &path);
    EXPECT_TRUE(path == row.ended) << testing::PrintToString(row.path);
  }
}

}  // namespace
}  // namespace tov::filesystem::detail
