#include <gtest/gtest.h>

#include "foundation/cast.h"
#include "foundation/convert_to_container.h"
#include "foundation/utf.h"
#include "tests/foundation/failing_memory.h"

namespace tov::text {
namespace {

using tests::AllocationsMade;
using tests::FailingMemory;

constexpr int kOutOfMemory = static_cast<int>(0x80000041U);

TEST(ConvertToContainerMemory, AStringThatCannotGrowIsOutOfMemoryAndStaysAsItWas) {
  const WideString wide(1000, u'w');
  const NarrowString narrow(1000, 'n');
  NarrowString to_narrow = "as it was";
  WideString to_wide = u"as it was";
  int narrow_result = 0;
  int wide_result = 0;

  {
    const FailingMemory memory(0);
    narrow_result = Utf16ToUtf8::Do(wide, to_narrow, 2);
  }
  {
    const FailingMemory memory(0);
    wide_result = Utf8ToUtf16::Do(narrow, to_wide, 2);
  }

  EXPECT_EQ(narrow_result, kOutOfMemory);
  EXPECT_EQ(to_narrow, "as it was");
  EXPECT_EQ(wide_result, kOutOfMemory);
  EXPECT_EQ(to_wide, u"as it was");
}

TEST(ConvertToContainerMemory, TheOutputIsSizedOnce) {
  const WideString wide(1000, u'w');
  NarrowString narrow;
  const std::size_t before = AllocationsMade();

  const int result = Utf16ToUtf8::Do(wide, narrow, 0);

  EXPECT_EQ(AllocationsMade(), before + 1);
  EXPECT_EQ(result, 0);
}

TEST(UtfMemory, ATextThatThereIsNoMemoryForIsEmpty) {
  const WideString wide(1000, u'w');
  const NarrowString narrow(1000, 'n');
  NarrowString to_narrow = "as it was";
  WideString to_wide = u"as it was";

  {
    const FailingMemory memory(0);
    to_narrow = ToUtf8(wide);
  }
  {
    const FailingMemory memory(0);
    to_wide = ToUtf16(narrow);
  }

  EXPECT_EQ(to_narrow, "");
  EXPECT_EQ(to_wide, u"");
}

TEST(CastMemory, TheResultIsSizedOnce) {
  const WideString wide(1000, u'w');
  const std::string narrow(1000, 'n');
  const std::size_t before = AllocationsMade();

  const auto to_narrow = Cast<std::string>(wide);
  const auto to_wide = Cast<WideString>(narrow);

  EXPECT_EQ(AllocationsMade(), before + 2);
}

}  // namespace
}  // namespace tov::text
