// Standard streams that are closed, full, or that nobody reads.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <string>

#include "tests/support/launcher.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/settings_file.h"

namespace tests {
namespace {

constexpr unsigned int kCombinations = 1U << 3;

// The launch with those of its streams closed whose bits are set.
Command WithClosed(Command launch, unsigned int streams) {
  return launch.Before([streams] {
    for (int descriptor = 0; descriptor < 3; ++descriptor) {
      if ((streams & (1U << descriptor)) != 0) {
        ::close(descriptor);
      }
    }
  });
}

TEST(Streams, ALaunchRunsWhicheverAreClosed) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.36");
  const auto settings = SettingsFile::ForRoot(runtime.Root());
  for (unsigned int closed = 0; closed < kCombinations; ++closed) {
    SCOPED_TRACE(closed);
    const StandInHost host;

    EXPECT_TRUE(EndedSilently(WithClosed(Launcher(host), closed).Run(), 0));
    EXPECT_EQ(host.VersionThatRan(), "6.0.36");
  }
}

TEST(Streams, ALaunchEndsAsItsFailureHasItWhicheverAreClosed) {
  for (unsigned int closed = 0; closed < kCombinations; ++closed) {
    SCOPED_TRACE(closed);

    EXPECT_EQ(WithClosed(Launcher(), closed).Run().signal, SIGABRT);
    const SettingsFile settings("");
    EXPECT_TRUE(EndedSilently(WithClosed(Launcher(), closed).Run(), 255));
  }
}

TEST(Streams, LastWordsThatDoNotFitAreLost) {
  const Outcome outcome = Launcher().Before([] { ::dup2(::open("/dev/full", O_WRONLY), STDERR_FILENO); }).Run();

  EXPECT_EQ(outcome.signal, SIGABRT);
}

TEST(Streams, LastWordsThatNobodyReadsEndTheLaunchBySigpipe) {
  const auto unread = [] {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) == 0) {
      ::dup2(ends[1], STDERR_FILENO);
    }
  };

  EXPECT_EQ(Launcher().Before(unread).Run().signal, SIGPIPE);
  EXPECT_EQ(Launcher().Before(unread).Before([] { std::signal(SIGPIPE, SIG_IGN); }).Run().signal, SIGABRT);
}

}  // namespace
}  // namespace tests
