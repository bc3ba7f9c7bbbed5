#include "tests/support/process.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

#include "tests/support/temp_folder.h"

namespace tests {
namespace {

TEST(Command, CollectsBothStreamsAndTheExitStatus) {
  const auto outcome = Command("/bin/sh").Arguments({"-c", "echo out; echo err >&2; exit 7"}).Run();

  EXPECT_EQ(outcome.status, 7);
  EXPECT_EQ(outcome.signal, 0);
  EXPECT_EQ(outcome.out, "out\n");
  EXPECT_EQ(outcome.err, "err\n");
}

TEST(Command, NamesTheSignalThatEndedTheProgram) {
  const auto outcome = Command("/bin/sh").Arguments({"-c", "kill -ABRT $$"}).Run();

  EXPECT_EQ(outcome.status, -1);
  EXPECT_EQ(outcome.signal, SIGABRT);
}

TEST(Command, HandsOverArgumentsVariablesAndInputUnchanged) {
  const auto outcome =
      Command("/bin/sh")
          .Arguments({"-c", "printf '[%s]' \"$@\"; printf '[%s]' \"$X\"; cat", "sh", "", "a b", "\xff"})
          .Variable("X", "y=z")
          .Input(std::string(200'000, 'i'))
          .Run();

  EXPECT_EQ(outcome.out, "[][a b][\xff][y=z]" + std::string(200'000, 'i'));
}

TEST(Command, KillsWhatTakesTooLong) {
  const auto outcome = Command("/bin/sleep").Arguments({"100"}).Timeout(std::chrono::milliseconds(50)).Run();

  EXPECT_TRUE(outcome.timed_out);
  EXPECT_EQ(outcome.signal, SIGKILL);
}

TEST(Command, ReadsNoForbiddenFileWithoutTheRightToReadEverything) {
  const TempFolder folder;
  WriteFile(folder / "secret", "words");
  std::filesystem::permissions(folder / "secret", std::filesystem::perms::none);

  const auto outcome = Command("/bin/cat").Arguments({(folder / "secret").string()}).WithoutReadingEverything().Run();

  EXPECT_NE(outcome.status, 0);
  EXPECT_EQ(outcome.out, "");
}

TEST(Command, AProgramThatCannotBeExecutedEndsWith127) {
  EXPECT_EQ(Command("/no/such/program").Run().status, 127);
}

}  // namespace
}  // namespace tests
