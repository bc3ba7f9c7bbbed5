#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>

#include "foundation/exception.h"
#include "foundation/result_code_exception.h"
#include "tests/foundation/failing_memory.h"

namespace tov {
namespace {

using tests::AllocationsAlive;
using tests::AllocationsMade;
using tests::FailingMemory;

constexpr source_location kHere{"a.cpp", 42};
constexpr const char* kMessage = "a message that is too long to be kept inside the string itself";

const std::string kWhat = std::string("a.cpp(42): ") + kMessage +
                          ". Properties:\nfirst=a value that is too long to be kept inside the string\n"
                          "second=0x00000001\nCall stack:\n";

tov::exception Failure() {
  return {kHere,
          kMessage,
          {{"first", 1, NarrowString("a value that is too long to be kept inside the string")},
           {"second", 2, std::int32_t{1}}}};
}

TEST(ExceptionMemory, WhatIsTheMessageWhileItCannotBeComposedAndIsComposedLater) {
  bool failed = true;
  for (std::size_t successes = 0; failed; ++successes) {
    const tov::exception failure = Failure();
    std::string text;
    {
      const FailingMemory memory(successes);
      const char* what = failure.what();
      failed = memory.HasFailed();
      const FailingMemory no_more(1000);
      text = what;
    }

    EXPECT_EQ(text, failed ? kMessage : kWhat) << "allocation " << successes;
    EXPECT_EQ(failure.what(), kWhat) << "allocation " << successes;
    ASSERT_LT(successes, 100U);
  }
}

TEST(ExceptionMemory, AConstructionThatFailsIsABadAllocAndLeavesNothing) {
  bool failed = true;
  for (std::size_t successes = 0; failed; ++successes) {
    const std::size_t before = AllocationsAlive();
    {
      const FailingMemory memory(successes);
      try {
        const tov::exception failure = Failure();
        failed = false;
        EXPECT_FALSE(memory.HasFailed());
      } catch (const std::bad_alloc&) {
        failed = true;
      }
    }

    EXPECT_EQ(AllocationsAlive(), before) << "allocation " << successes;
    ASSERT_LT(successes, 100U);
  }
}

TEST(ExceptionMemory, TheContextLivesAsLongAsAnyCopyAndNoLonger) {
  const std::size_t before = AllocationsAlive();
  auto first = std::make_unique<tov::exception>(Failure());
  auto second = std::make_unique<tov::exception>(*first);
  first->what();

  first.reset();
  EXPECT_STREQ(second->what(), kWhat.c_str());
  second.reset();

  EXPECT_EQ(AllocationsAlive(), before);
}

TEST(ExceptionMemory, CopyingAndAssigningAllocateNothing) {
  const tov::exception failure = Failure();
  tov::exception assigned;
  const std::size_t before = AllocationsMade();

  tov::exception copy(failure);
  assigned = copy;
  copy = tov::exception();

  EXPECT_EQ(AllocationsMade(), before);
}

TEST(ExceptionMemory, AssigningReleasesTheOldContext) {
  tov::exception assigned;
  const std::size_t before = AllocationsAlive();
  assigned = Failure();
  EXPECT_GT(AllocationsAlive(), before);

  assigned = tov::exception();

  EXPECT_EQ(AllocationsAlive(), before);
}

TEST(ExceptionMemory, TheSecondWhatComposesNothing) {
  const tov::exception failure = Failure();
  const tov::exception copy(failure);  // NOLINT(performance-unnecessary-copy-initialization): what is tested.
  failure.what();
  const std::size_t before = AllocationsMade();

  failure.what();
  copy.what();

  EXPECT_EQ(AllocationsMade(), before);
}

}  // namespace
}  // namespace tov
