// A runtime on a disk that fails.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/types.h>
#include <sys/vfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string>
#include <thread>

#include "tests/faults/launch_world.h"
#include "tests/support/doctor.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

bool IsMounted(const fs::path& folder) {
  constexpr auto kFuse = 0x65735546;
  struct statfs status {};
  return ::statfs(folder.c_str(), &status) == 0 && status.f_type == kFuse;
}

bool HasEnded(pid_t process) {
  siginfo_t info{};
  return ::waitid(P_PID, static_cast<id_t>(process), &info, WEXITED | WNOHANG | WNOWAIT) != 0 || info.si_pid != 0;
}

// What fails; of "read" what ends behind that byte.
struct Failure {
  const char* operation;
  std::string name;
  long from = 0;
};

// Mounted over a folder while it lives: the same files, with one failure.
class FailingFileSystem {
 public:
  FailingFileSystem(const fs::path& folder, const Failure& failure) : folder_(folder), server_(::fork()) {
    if (server_ == 0) {
      ::execl(FAILING_FILE_SYSTEM, FAILING_FILE_SYSTEM, folder.c_str(), failure.operation, failure.name.c_str(),
              std::to_string(failure.from).c_str(), nullptr);
      ::_exit(1);
    }
    while (!IsMounted(folder) && !HasEnded(server_)) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
  ~FailingFileSystem() {
    ::umount2(folder_.c_str(), MNT_DETACH);
    ::kill(server_, SIGKILL);
    ::waitpid(server_, nullptr, 0);
  }
  FailingFileSystem(const FailingFileSystem&) = delete;
  FailingFileSystem& operator=(const FailingFileSystem&) = delete;

 private:
  fs::path folder_;
  pid_t server_;
};

class FailingDisk : public testing::Test {
 protected:
  void SetUp() override {
    const FailingFileSystem none(world_.Runtime().Root(), {"nothing", ""});
    if (!IsMounted(world_.Runtime().Root())) {
      GTEST_SKIP() << "no file system of one's own can be mounted here (FUSE)";
    }
  }

  Outcome LaunchWith(const Failure& failure) {
    const FailingFileSystem disk(world_.Runtime().Root(), failure);
    return world_.Launch().LeavesSignalsAlone().Run();
  }

  bool DoctorSays(const Failure& failure, const char* words) {
    const FailingFileSystem disk(world_.Runtime().Root(), failure);
    return Doctor().Run().out.starts_with(words);
  }

  LaunchWorld world_;
};

const std::string kLibrary = "/host/fxr/" + std::string(kNewest) + "/libhostfxr.so";

TEST_F(FailingDisk, OneWithoutAFailureIsLikeAnyOther) {
  EXPECT_TRUE(world_.Ran(LaunchWith({"nothing", ""}), kNewest));
}

TEST_F(FailingDisk, AFolderThatCannotBeReadHoldsNoVersion) {
  for (const Failure& failure : {Failure{"status", "/host/fxr"}, Failure{"list", "/host/fxr"}}) {
    SCOPED_TRACE(failure.operation);
    EXPECT_TRUE(EndedWith255(LaunchWith(failure)));
    EXPECT_TRUE(DoctorSays(failure, "A launch would end with status 255: "));
  }
}

TEST_F(FailingDisk, AVersionThatCannotBeReadIsPassedOver) {
  const std::string folder = kLibrary.substr(0, kLibrary.rfind('/'));
  for (const Failure& failure : {Failure{"status", folder}, Failure{"list", folder}, Failure{"status", kLibrary},
                                 Failure{"open", kLibrary}, Failure{"read", kLibrary}}) {
    SCOPED_TRACE(failure.operation + (" " + failure.name));
    EXPECT_TRUE(world_.Ran(LaunchWith(failure), kOlder));
    EXPECT_TRUE(DoctorSays(failure, "The host accepts the application"));
  }
}

TEST_F(FailingDisk, APageThatTheCheckDoesNotReadEndsTheProcessWhenItIsTouched) {
  const Failure failure{"read", kLibrary, 4097};

  EXPECT_EQ(LaunchWith(failure).signal, SIGBUS);
  EXPECT_TRUE(DoctorSays(failure, "A launch would die of SIGBUS: "));
}

}  // namespace
}  // namespace tests
