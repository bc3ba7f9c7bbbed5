// What the tests labelled sandbox find, and what is said where they cannot run.
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/private_root.h"
#include "tests/support/process.h"
#include "tests/support/temp_folder.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

TEST(SandboxMain, TheProductsFoldersAreEmptyAndWritable) {
  for (const fs::path folder : {"/opt/morvath", "/var/opt/morvath"}) {
    EXPECT_TRUE(fs::is_empty(folder)) << folder;
    EXPECT_NO_THROW(WriteFile(folder / "file", "bytes")) << folder;
  }
}

TEST(SandboxMain, TemporaryFoldersAreInsideAndOfAnyUser) {
  const fs::path parent = TempFolder().Path().parent_path();

  EXPECT_EQ(parent.parent_path(), "/var/opt");
  EXPECT_EQ(fs::status(parent).permissions(), fs::perms::all | fs::perms::sticky_bit);
}

// What a program sees in one more namespace, within that of the test.
Outcome Inside(const std::string& script) {
  return Command("/bin/bash")
      .Variable("PATH", "/usr/bin:/bin")
      .Arguments({"-euc", script})
      .Before(EnterPrivateRoot)
      .Run();
}

TEST(SandboxMain, WhatIsInsideIsNotSeenOutside) {
  WriteFile("/opt/morvath/outside", "");
  const std::string mounts = ReadFile("/proc/self/mounts");

  const Outcome outcome = Inside("ls -A /opt/morvath /var/opt/morvath; touch /opt/morvath/inside");

  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_EQ(outcome.out, "/opt/morvath:\n\n/var/opt/morvath:\n");
  EXPECT_FALSE(fs::exists("/opt/morvath/inside"));
  EXPECT_EQ(ReadFile("/proc/self/mounts"), mounts);
}

TEST(SandboxMain, OtherFoldersStay) {
  WriteFile("/opt/other/file", "words");
  WriteFile("/var/opt/file", " and words");
  const std::string list =
      "ls -A /opt /var/opt /mnt; grep ' /mnt' /proc/self/mounts || true;"
      "cat /opt/other/file /var/opt/file";
  const Outcome outside = Command("/bin/bash").Variable("PATH", "/usr/bin:/bin").Arguments({"-euc", list}).Run();

  EXPECT_EQ(Inside(list).out, outside.out);
  EXPECT_TRUE(outside.out.ends_with("words and words")) << outside;
}

TEST(SandboxMain, WithoutTheRightToMountItSaysSoInOneLine) {
  Command program(fs::read_symlink("/proc/self/exe"));
  program.Variable("PATH", "/usr/sbin:/usr/bin:/sbin:/bin").Before([] { ::prctl(PR_CAPBSET_DROP, CAP_SYS_ADMIN); });

  const Outcome outcome = program.Run();

  EXPECT_EQ(outcome.status, 125) << outcome;
  EXPECT_TRUE(outcome.err.starts_with("No private mount namespace can be made here: ")) << outcome;
  EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome;
}

}  // namespace
}  // namespace tests
