// scripts/private-root: what a command finds inside, and what is said where no such namespace can be made.
#include <gtest/gtest.h>

#include "tests/support/process.h"
#include "tests/support/temp_folder.h"

namespace tests {
namespace {

// Where the private namespace can be made, the test itself is in one, and is root there.
Outcome Shell(const std::string& script) {
  return Command("/bin/bash").Variable("PATH", "/usr/sbin:/usr/bin:/sbin:/bin").Arguments({"-euc", script}).Run();
}

const std::string kScripts = SCRIPTS;
const std::string kPrivateRoot = kScripts + "/private-root";

TEST(PrivateRoot, TheProductsFoldersAreEmptyAndWritableInsideAndUnchangedOutside) {
  const Outcome outcome = Shell("touch /opt/morvath/outside; " + kPrivateRoot +
                                " sh -c 'ls -A /opt/morvath /var/opt/morvath; touch /opt/morvath/inside';"
                                " ls /opt/morvath");

  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_EQ(outcome.out, "/opt/morvath:\n\n/var/opt/morvath:\noutside\n");
}

TEST(PrivateRoot, TheExitStatusIsTheCommands) {
  EXPECT_EQ(Shell(kPrivateRoot + " sh -c 'exit 7'").status, 7);
}

TEST(PrivateRoot, WithoutTheRightToMountItSaysSoInOneLine) {
  const Outcome outcome =
      Shell("exec setpriv --bounding-set -sys_admin --inh-caps -sys_admin " + kPrivateRoot + " true");

  EXPECT_EQ(outcome.status, 125) << outcome;
  EXPECT_TRUE(outcome.err.starts_with("No private mount namespace can be made here: root is not permitted to"));
  EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome;
}

// A chroot with this system's programs, whose "/" is an ordinary folder. Its mounts are gone when the shell ends.
TEST(PrivateRoot, InAPlainChrootItSaysThatTheRootIsNotAMountPoint) {
  const TempFolder folder;

  const Outcome outcome = Shell("cd " + folder.Path().string() +
                                "; exec unshare --mount --propagation private bash -euc '"
                                "   mkdir proc scripts; mount --rbind /proc proc; mount --bind " +
                                kScripts +
                                " scripts;"
                                "   for name in bin lib lib64 sbin usr; do"
                                "     if [ -L /$name ]; then cp -P /$name .; elif [ -d /$name ]; then"
                                "       mkdir $name; mount --rbind /$name $name; fi; done;"
                                "   exec chroot . /scripts/private-root true'");

  EXPECT_EQ(outcome.status, 125) << outcome;
  EXPECT_EQ(outcome.err,
            "No private mount namespace can be made here: / is not a mount point, as in a plain chroot."
            " Outside of it, before chroot: mount --bind DIR DIR\n");
}

}  // namespace
}  // namespace tests
