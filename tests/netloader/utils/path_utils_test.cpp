#include "netloader/utils/path_utils.h"

#include <gtest/gtest.h>

namespace netloader::utils {
namespace {

using tov::WideString;

TEST(PathUtils, APathIsValidWhenItIsAbsolute) {
  struct Row {
    WideString path;
    bool valid;
  };
  for (const Row& row : {Row{u"", false}, Row{u"/", true}, Row{u"/opt", true}, Row{u"//", true}, Row{u"/ ", true},
                         Row{u"relative/x", false}, Row{u" /opt", false}, Row{u"./x", false}, Row{u"\\opt", false}}) {
    EXPECT_EQ(CheckIsValidPath(row.path), row.valid) << testing::PrintToString(row.path);
  }
}

TEST(PathUtils, TheLastNameIsWhatFollowsTheLastSeparatorWhichIsNotIgnoredAtTheEnd) {
  struct Row {
    WideString path;
    WideString name;
  };
  for (const Row& row : {Row{u"/usr/share/dotnet/host/fxr/6.0.25", u"6.0.25"},
                         Row{u"/usr/share/dotnet/host/fxr/6.0.25/", u""}, Row{u"6.0.25", u"6.0.25"}, Row{u"/", u""},
                         Row{u"", u""}, Row{u"/a", u"a"}, Row{u"a/b", u"b"}, Row{u"a//", u""}, Row{u"a//b", u"b"}}) {
    EXPECT_TRUE(GetLastFolderName(row.path) == row.name) << testing::PrintToString(row.path);
  }
}

TEST(PathUtils, TheParentIsWhatPrecedesTheLastSeparatorWhichIsNotIgnoredAtTheEnd) {
  struct Row {
    WideString path;
    WideString parent;
  };
  for (const Row& row : {Row{u"/a/b", u"/a"}, Row{u"/a/b/", u"/a/b"}, Row{u"/a", u"/"}, Row{u"/", u"/"}, Row{u"a", u""},
                         Row{u"/a//b", u"/a/"}, Row{u"", u""}, Row{u"a/b", u"a"}, Row{u"a/", u"a"}, Row{u"//", u"/"},
                         Row{u"//a", u"/"}}) {
    EXPECT_TRUE(GetParentPath(row.path) == row.parent) << testing::PrintToString(row.path);
  }
}

}  // namespace
}  // namespace netloader::utils
