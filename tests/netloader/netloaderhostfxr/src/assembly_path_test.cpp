#include "netloader/netloaderhostfxr/src/assembly_path.h"

#include <gtest/gtest.h>

namespace netloader {
namespace {

TEST(AssemblyPath, TheProductsFolderIsFixed) {
  EXPECT_EQ(kAssemblyDir, u"/opt/morvath/quor/lib64");
}

TEST(AssemblyPath, IsTheFileInTheProductsFolder) {
  EXPECT_EQ(AssemblyPath(u"grellin_utils.dll"), u"/opt/morvath/quor/lib64/grellin_utils.dll");
  EXPECT_EQ(AssemblyPath(u""), u"/opt/morvath/quor/lib64/");
  EXPECT_EQ(AssemblyPath(u"/x.dll"), u"/opt/morvath/quor/lib64//x.dll");
}

}  // namespace
}  // namespace netloader
