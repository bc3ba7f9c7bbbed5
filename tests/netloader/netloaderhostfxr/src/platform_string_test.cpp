#include "netloader/netloaderhostfxr/src/platform_string.h"

#include <gtest/gtest.h>

#include <string>

#include "foundation/result_code.h"
#include "foundation/result_code_exception.h"
#include "tests/netloader/netloaderhostfxr/src/interposed_calls.h"

namespace netloader {
namespace {

TEST(CastPathToPlatformString, IsTheUtf8FormOfAnyPath) {
  EXPECT_EQ(CastPathToPlatformString(u""), "");
  EXPECT_EQ(CastPathToPlatformString(u"/a/\u00e9\u20ac\U0001F600"), "/a/\u00e9\u20ac\U0001F600");
  EXPECT_EQ(CastPathToPlatformString(tov::WideString(1, u'\xd800')), "\xed\xa0\x80");
}

TEST(CastPathToPlatformString, ThrowsWithTheResultOfAConversionThatFails) {
  const tov::WideString path(5001, u'/');
  const tests::FailingAllocation fault(path.size() + 1);
  try {
    CastPathToPlatformString(path);
    FAIL() << "nothing was thrown";
  } catch (const tov::CheckResultFailedException& failure) {
    EXPECT_EQ(failure.ResultCode(), tov::result_code::kOutOfMemory);
    EXPECT_TRUE(
        std::string(failure.what()).starts_with("netloader/netloaderhostfxr/src/loadermodule(77): Expression failed."))
        << failure.what();
  }
}

}  // namespace
}  // namespace netloader
