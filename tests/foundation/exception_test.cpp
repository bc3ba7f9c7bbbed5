#include "foundation/exception.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>

#include "tests/support/virtual_slot.h"

namespace tov {
namespace {

static_assert(std::is_base_of_v<std::exception, tov::exception>);
static_assert(std::is_base_of_v<tov::exception, Exception>);
static_assert(std::is_nothrow_copy_constructible_v<tov::exception>);
static_assert(std::is_nothrow_copy_assignable_v<tov::exception>);
static_assert(noexcept(std::declval<const tov::exception&>().what()));

constexpr source_location kHere{"a.cpp", 42};

class WithProperties : public tov::exception {
 public:
  using tov::exception::exception;
  using tov::exception::Properties;
};

struct OwnType : ExceptionBase<OwnType, Exception> {
  using ExceptionBase::ExceptionBase;
};

TEST(Exception, WhatNamesThePlaceTheMessageAndTheCallStack) {
  EXPECT_STREQ(tov::exception(kHere, "m").what(), "a.cpp(42): m. Call stack:\n");
}

TEST(Exception, WhatNamesTheProperties) {
  const tov::exception failure(kHere, "m", {{"count", 1, std::uint32_t{3}}, {"name", 2, NarrowString("x")}});

  EXPECT_STREQ(failure.what(), "a.cpp(42): m. Properties:\ncount=0x00000003\nname=x\nCall stack:\n");
}

TEST(Exception, WithoutAContextItIsUnknown) {
  EXPECT_STREQ(tov::exception().what(), "Unknown exception");
  EXPECT_STREQ(Exception().what(), "Unknown exception");
  EXPECT_TRUE(WithProperties().Properties().empty());
}

TEST(Exception, TheMessageIsCopied) {
  std::string message = "before";
  const tov::exception failure(kHere, message.c_str());

  message = "behind";

  EXPECT_STREQ(failure.what(), "a.cpp(42): before. Call stack:\n");
}

TEST(Exception, WhatIsComposedOnceAndSharedByAllCopies) {
  const tov::exception first(kHere, "m");
  const tov::exception second(first);  // NOLINT(performance-unnecessary-copy-initialization): what is tested.

  const char* const text = first.what();

  EXPECT_EQ(first.what(), text);
  EXPECT_EQ(second.what(), text);
}

TEST(Exception, WhatOfACopyOutlivesTheFirst) {
  auto first = std::make_unique<tov::exception>(kHere, "m");
  const tov::exception second(*first);
  const char* const text = first->what();

  first.reset();

  EXPECT_STREQ(text, "a.cpp(42): m. Call stack:\n");
  EXPECT_EQ(second.what(), text);
}

TEST(Exception, AssigningTakesPlaceMessageAndProperties) {
  WithProperties assigned({"old.cpp", 1}, "old", {{"old", 1, std::int32_t{1}}});
  EXPECT_STREQ(assigned.what(), "old.cpp(1): old. Properties:\nold=0x00000001\nCall stack:\n");

  assigned = WithProperties({"new.cpp", 2}, "new", {{"new", 1, std::int32_t{2}}});

  EXPECT_STREQ(assigned.what(), "new.cpp(2): new. Properties:\nnew=0x00000002\nCall stack:\n");
  ASSERT_EQ(assigned.Properties().size(), 1U);
  EXPECT_EQ(assigned.Properties()[0].name, "new");
}

TEST(Exception, PropertiesKeepTheirOrderAndThoseWithOneName) {
  const WithProperties failure(kHere, "m",
                               {{"a", 1, std::int32_t{1}}, {"b", 2, OpaqueValue{5}}, {"b", 3, OpaqueValue{6}}});

  ASSERT_EQ(failure.Properties().size(), 3U);
  EXPECT_EQ(failure.Properties()[0].name, "a");
  EXPECT_EQ(failure.Properties()[1].name, "b");
  EXPECT_EQ(failure.Properties()[1].type_code, 5U);
  EXPECT_EQ(failure.Properties()[2].type_identity, 3U);
}

TEST(Exception, AThrownCopyIsCaughtAsAStandardException) {
  try {
    throw OwnType(kHere, "m", u"text");
  } catch (const std::exception& caught) {
    EXPECT_STREQ(caught.what(), "a.cpp(42): m. Call stack:\n");
    const auto* own = dynamic_cast<const ExceptionBase<OwnType, Exception>*>(&caught);
    EXPECT_NE(own, nullptr);
  }
}

TEST(Exception, HasATextOfItsOwn) {
  const Exception failure(kHere, "m", u"text \U0001F600");

  EXPECT_EQ(failure.Text(), u"text \U0001F600");
  EXPECT_EQ(Exception(failure).Text(), failure.Text());
  EXPECT_EQ(Exception(kHere, "m").Text(), u"");
}

TEST(Exception, CopiesMayGoOnAnyThread) {
  auto shared = std::make_unique<Exception>(kHere, "m", u"text");
  const char* const text = shared->what();
  std::array<std::thread, 4> threads;

  for (std::thread& thread : threads) {
    thread = std::thread([copy = *shared, text] {
      for (int round = 0; round < 5'000; ++round) {
        const Exception other(copy);  // NOLINT(performance-unnecessary-copy-initialization): what is tested.
        ASSERT_EQ(other.what(), text);
      }
    });
  }
  shared.reset();
  for (std::thread& thread : threads) {
    thread.join();
  }
}

TEST(Exception, TheOperationsStandInTheTableBehindTheDestructor) {
  EXPECT_EQ(tests::VirtualSlot(&tov::exception::what), 2);
  EXPECT_EQ(tests::VirtualSlot(&Exception::Text), 3);
}

}  // namespace
}  // namespace tov
