// Launches by a process that may have little of something.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <string>

#include "tests/faults/launch_world.h"

namespace tests {
namespace {

using Resource = __rlimit_resource;

Command Limited(Command launch, Resource resource, rlim_t limit) {
  return launch.Before([resource, limit] {
    const rlimit both{limit, limit};
    ::setrlimit(resource, &both);
  });
}

// What happens before the launcher's first step: the kernel, the dynamic loader or the C++ library has too little.
bool EndedBeforeItStarted(const Outcome& outcome) {
  const bool ofKernel = outcome.signal == SIGSEGV || outcome.signal == SIGKILL;
  const bool ofDynamicLoader = outcome.status == 127 && !outcome.err.empty();
  const bool ofCxxLibrary = outcome.signal == SIGABRT && outcome.err.starts_with("terminate called ");
  return outcome.out.empty() && ((ofKernel && outcome.err.empty()) || ofDynamicLoader || ofCxxLibrary);
}

class Limits : public testing::Test {
 protected:
  void SetUp() override {
    if (IsSanitized()) {
      GTEST_SKIP() << "a sanitizer needs more";
    }
  }

  LaunchWorld world_;
};

TEST_F(Limits, WithFewDescriptorsALaunchEndsAsThoughFilesCouldNotBeOpened) {
  for (rlim_t limit = 0; limit < 16; ++limit) {
    SCOPED_TRACE(limit);
    const Outcome outcome = Limited(world_.Launch(), RLIMIT_NOFILE, limit).Run();
    EXPECT_TRUE((limit < 4 && EndedBeforeItStarted(outcome)) ||
                (limit < 4 && Aborted(outcome, "Cannot open settings file by path: ")) ||
                (limit < 5 && EndedWith255(outcome)) || world_.Ran(outcome))
        << outcome;
  }
}

TEST_F(Limits, WithLittleMemoryALaunchNeverCrashes) {
  if (IsInstrumented()) {
    GTEST_SKIP() << "an instrumented launch takes memory of its own";
  }
  constexpr rlim_t kTooLittle = 4 * 1024 * 1024;
  constexpr rlim_t kStep = 32 * 1024;
  rlim_t limit = kTooLittle;
  Outcome outcome;
  for (; limit < 10 * kTooLittle && !world_.Ran(outcome); limit += kStep) {
    SCOPED_TRACE(limit);
    outcome = Limited(world_.Launch(), RLIMIT_AS, limit).Run();
    EXPECT_TRUE(EndedBeforeItStarted(outcome) || Aborted(outcome, "std::bad_alloc\n") || EndedWith255(outcome) ||
                world_.Ran(outcome))
        << outcome;
  }
  EXPECT_TRUE(world_.Ran(outcome));
}

TEST_F(Limits, AStackOf64KibibytesIsEnough) {
  EXPECT_TRUE(world_.Ran(Limited(world_.Launch(), RLIMIT_STACK, 64 * 1024).Run(), kNewest));
}

TEST_F(Limits, WhatALaunchDoesNotNeedIsNoLimit) {
  for (const Resource resource : {RLIMIT_CORE, RLIMIT_MEMLOCK, RLIMIT_MSGQUEUE, RLIMIT_NPROC, RLIMIT_SIGPENDING}) {
    SCOPED_TRACE(resource);
    EXPECT_TRUE(world_.Ran(Limited(world_.Launch(), resource, 0).Run(), kNewest));
  }
}

}  // namespace
}  // namespace tests
