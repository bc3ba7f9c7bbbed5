// The main function of tests that need the product's fixed folders: runs them in a private namespace of their own.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <string>
#include <system_error>
#include <vector>

#include "tests/support/private_root.h"

namespace {

// Set for the second run of this executable, which is inside already. Not passed on to what the tests start.
constexpr const char* kInside = "TESTS_INSIDE_PRIVATE_ROOT";

// The name of every test is asked for on machines that cannot run them, too.
bool OnlyListsTests(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--gtest_list_tests") == 0) {
      return true;
    }
  }
  return false;
}

// Whether this process is inside. Hundreds of tests enter, and the script starts dozens of programs for it; but the
// script also serves ordinary users, and says why no namespace can be made.
bool EntersByItself() {
  try {
    if (::getuid() == 0) {
      tests::EnterPrivateRoot();
      return true;
    }
  } catch (const std::system_error&) {
  }
  return false;
}

// To make and remove folders on a disk takes longer than most tests do otherwise. Both folders around the product's are
// in memory here.
void KeepTemporaryFilesInMemory() {
  const char* folder = "/var/opt/tests";
  if (::mkdir(folder, 0) == 0 && ::chmod(folder, 01777) == 0) {
    ::setenv("TMPDIR", folder, 1);
  }
}

// Comes back only when the script cannot be started; a namespace that cannot be made is a line of the script's own.
int RunByScript(char** argv) {
  ::setenv(kInside, "1", 1);
  const std::string self = std::filesystem::read_symlink("/proc/self/exe");
  std::vector<const char*> command{PRIVATE_ROOT, self.c_str()};
  for (char** argument = argv + 1; *argument != nullptr; ++argument) {
    command.push_back(*argument);
  }
  command.push_back(nullptr);
  ::execv(PRIVATE_ROOT, const_cast<char**>(command.data()));
  std::cerr << "cannot start " PRIVATE_ROOT ": " << std::strerror(errno) << std::endl;
  return 125;
}

}  // namespace

int main(int argc, char** argv) {
  const bool isInside = std::getenv(kInside) != nullptr;
  ::unsetenv(kInside);
  if (!OnlyListsTests(argc, argv)) {
    if (!isInside && !EntersByItself()) {
      return RunByScript(argv);
    }
    KeepTemporaryFilesInMemory();
  }
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
