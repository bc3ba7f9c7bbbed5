// scripts/progress: what a long step shows, and where its command's output goes.
#include <gtest/gtest.h>

#include "tests/support/process.h"

namespace tests {
namespace {

Outcome Progress(const std::string& command) {
  return Command(SCRIPTS "/progress")
      .Variable("PATH", "/usr/bin:/bin")
      .Arguments({"Waiting", "sh", "-c", command})
      .Run();
}

TEST(Progress, ACommandThatSucceedsWritesToStandardOutput) {
  const Outcome outcome = Progress("echo out; echo err >&2");

  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_EQ(outcome.out, "out\nerr\n");
}

TEST(Progress, ACommandThatFailsWritesToStandardErrorAndKeepsItsStatus) {
  const Outcome outcome = Progress("echo out; echo err >&2; exit 7");

  EXPECT_EQ(outcome.status, 7) << outcome;
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "Waiting ...\nout\nerr\n");
}

TEST(Progress, InAPipeTheStepIsOneLineHoweverLongItTakes) {
  const Outcome outcome = Progress("sleep 3");

  EXPECT_EQ(outcome.err, "Waiting ...\n");
}

}  // namespace
}  // namespace tests
