#include "doctor/examine/surroundings.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/resource.h>

#include "doctor/child/child.h"
#include "tests/support/scoped_environment.h"

namespace doctor {
namespace {

// What a child sees that has limited itself.
Answer SeenAfter(const std::function<void()>& change) {
  return RunInChild(
             [&] {
               change();
               const Surroundings seen = LookAround();
               return Answer{std::to_string(seen.open_files.value_or(0)),
                             seen.may_execute_written_memory ? "may" : "may not"};
             },
             std::chrono::seconds(60))
      .answer;
}

TEST(Surroundings, LimitsAreThoseOfThisProcess) {
  const Answer seen = SeenAfter([] {
    const rlimit files{17, 17};
    ::setrlimit(RLIMIT_NOFILE, &files);
  });

  EXPECT_EQ(seen.at(0), "17");
  EXPECT_EQ(seen.at(1), "may");
}

TEST(Surroundings, MemoryThatMayNotBeWrittenAndThenExecutedIsSeen) {
  constexpr int kSetMemoryDenyWriteExecute = 65;  // PR_SET_MDWE, newer than these headers.
  if (::prctl(66, 0, 0, 0, 0) < 0) {
    GTEST_SKIP() << "this kernel cannot forbid it";
  }

  EXPECT_EQ(SeenAfter([] { ::prctl(kSetMemoryDenyWriteExecute, 1, 0, 0, 0); }).at(1), "may not");
}

TEST(Surroundings, VariablesOfTheCompilerAreSeen) {
  tests::ScopedEnvironment environment;
  environment.Set("DOTNET_AltJit", "*");

  const auto seen = LookAround().compiler_variables;

  ASSERT_EQ(seen.size(), 1U);
  EXPECT_EQ(seen[0].first + "=" + seen[0].second, "DOTNET_AltJit=*");
}

TEST(Surroundings, VariablesOfTheCollectorAreSeenInBothSpellings) {
  tests::ScopedEnvironment environment;
  environment.Set("DOTNET_GCHeapHardLimit", "10").Set("COMPlus_GCPath", "/nothing");

  const auto seen = LookAround().collector_variables;

  ASSERT_EQ(seen.size(), 2U);
  EXPECT_EQ(seen[0].first + "=" + seen[0].second, "DOTNET_GCHeapHardLimit=10");
  EXPECT_EQ(seen[1].first + "=" + seen[1].second, "COMPlus_GCPath=/nothing");
}

}  // namespace
}  // namespace doctor
