// scripts/progress: what a long step shows, and where its command's output goes.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/process.h"
#include "tests/support/temp_folder.h"

namespace tests {
namespace {

Outcome Progress(const std::string& command, const std::string& path = "/usr/bin:/bin") {
  return Command(SCRIPTS "/progress").Variable("PATH", path).Arguments({"Waiting", "sh", "-c", command}).Run();
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

// The two seconds before each dot pass in a hundredth.
TEST(Progress, InAPipeTheStepIsOneLineHoweverLongItTakes) {
  const TempFolder folder;
  WriteFile(folder / "sleep", "#!/bin/sh\nexec /bin/sleep 0.02\n");
  std::filesystem::permissions(folder / "sleep", std::filesystem::perms::owner_all);

  const Outcome outcome = Progress("/bin/sleep 0.3", folder.Path().string() + ":/usr/bin:/bin");

  EXPECT_EQ(outcome.err, "Waiting ...\n");
}

}  // namespace
}  // namespace tests
