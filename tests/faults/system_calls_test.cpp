// System calls of a launch that fail, each in turn and with each error that it can have, or do less than was asked.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "tests/faults/launch_world.h"
#include "tests/support/watched_calls.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

struct CallErrors {
  std::string_view name;
  std::vector<int> errors;
};

// What each call of a launch can fail with, on some file system or other.
const std::vector<CallErrors> kErrors = {
    {"openat",
     {EACCES, EINTR, EIO, ELOOP, EMFILE, ENFILE, ENODEV, ENOENT, ENOMEM, ENOTDIR, ENXIO, EOVERFLOW, EPERM, ESTALE}},
    {"open", {EACCES, EINTR, EIO, ELOOP, EMFILE, ENFILE, ENOENT, ENOMEM}},
    {"newfstatat", {EACCES, EIO, ELOOP, ENOENT, ENOMEM, ENOTDIR, EOVERFLOW, ESTALE}},
    {"stat", {EACCES, EIO, ENOENT, ENOMEM}},
    {"lstat", {EACCES, EIO, ENOENT, ENOMEM}},
    {"statx", {EACCES, EIO, ENOENT, ENOMEM}},
    {"fstat", {EIO, ENOMEM, EOVERFLOW, ESTALE}},
    {"read", {EAGAIN, EINTR, EIO, ENOMEM, ESTALE}},
    {"pread64", {EINTR, EIO, ENOMEM, ESTALE}},
    {"getdents64", {EINTR, EIO, ENOENT, ENOMEM, ESTALE}},
    {"readlink", {EACCES, EIO, ELOOP, ENOENT, ENOMEM}},
    {"close", {EINTR, EIO, ENOSPC}},
    {"fcntl", {EINVAL}},
    {"brk", {ENOMEM}},
    {"mmap", {EACCES, EAGAIN, ENODEV, ENOMEM, EPERM}},
    {"mprotect", {EACCES, ENOMEM}},
    {"munmap", {EINVAL, ENOMEM}},
    {"getrandom", {EAGAIN, EINTR, ENOSYS}},
    {"futex", {EAGAIN, EINTR}},
};

std::vector<int> ErrorsOf(const WatchedCall& call) {
  const auto row = std::ranges::find(kErrors, call.Name(), &CallErrors::name);
  return row == kErrors.end() ? std::vector<int>() : row->errors;
}

// A call as it is told of once it is over.
struct MadeCall {
  std::string name;
  std::string path;
  int error = 0;  // What it failed with, if it did.
};

// Looks at the calls of one launch from the first step of main on: that sets the locale, and looks for its files.
class LaunchCalls {
 public:
  // Whether this call is one of the launcher's, and not of the dynamic loader before it, nor of the host.
  bool Counts(const WatchedCall& call) {
    has_begun_ = has_begun_ || call.Path().find("/locale") != std::string::npos;
    const bool isHosts = call.Name() == "write" || (call.Name() == "fcntl" && call.Argument(1) == F_GETFD);
    if (!has_begun_ || isHosts || call.Name() == "exit_group") {
      return false;
    }
    ++number_;
    return true;
  }

  // The number of the latest one that counts, from 1 on.
  [[nodiscard]] int Number() const { return number_; }

 private:
  bool has_begun_ = false;
  int number_ = 0;
};

// The kernel leaves the end of the heap where it is, and returns that instead of an error.
Decision FailToGrow(const WatchedCall& brk) {
  std::ifstream maps("/proc/" + std::to_string(brk.Process()) + "/maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.ends_with("[heap]")) {
      return Decision::Return(std::stoll(line.substr(line.find('-') + 1), nullptr, 16));
    }
  }
  return Decision::Make();
}

// A launch of which one call failed.
struct FaultyLaunch {
  Outcome outcome;
  std::optional<MadeCall> failed;  // Empty when it has fewer errors than was asked for.
  int calls = 0;                   // How many the launcher made.
  bool has_left_something_open = false;
};

bool HasOpenFiles(const WatchedCall& call) {
  const fs::directory_iterator open("/proc/" + std::to_string(call.Process()) + "/fd");
  return std::distance(begin(open), end(open)) > 3;
}

// The call of that number fails, with the error of that index among its own.
FaultyLaunch LaunchWithFault(const Command& launch, int number, std::size_t index) {
  FaultyLaunch result;
  LaunchCalls calls;
  const auto decide = [&](const WatchedCall& call) {
    if (call.Name() == "exit_group") {
      result.has_left_something_open = HasOpenFiles(call);
    }
    const std::vector<int> errors = ErrorsOf(call);
    if (!calls.Counts(call) || calls.Number() != number || index >= errors.size()) {
      return Decision::Make();
    }
    result.failed = MadeCall{call.Name(), call.Path(), errors[index]};
    return call.Name() == "brk" ? FailToGrow(call) : Decision::Fail(errors[index]);
  };
  result.outcome = Command(launch).Watched(decide).Run();
  result.calls = calls.Number();
  return result;
}

// A close that fails has closed all the same, but here it was not made.
void ForgetWhatIsLeftOpen(FaultyLaunch& launch) {
  launch.has_left_something_open = false;
  std::string& out = launch.outcome.out;
  for (std::size_t at = out.find("open "); at != std::string::npos; at = out.find("open ")) {
    out.erase(at, out.find('\n', at) + 1 - at);
  }
}

bool EndedForWantOfMemory(const Outcome& outcome) {
  return Aborted(outcome, "std::bad_alloc\n") ||
         (Aborted(outcome, "netloader/") && outcome.err.find("tov.result=0x80000041") != std::string::npos);
}

bool IsAboutMemory(const MadeCall& call) {
  return call.name == "brk" || call.name == "munmap" || call.name == "mprotect" ||
         (call.name == "mmap" && call.path.empty());
}

bool EndedAsForSettings(const MadeCall& call, const LaunchWorld& world, const Outcome& outcome) {
  if (call.name == "openat" || call.name == "open") {
    return call.error == ENOMEM ? EndedForWantOfMemory(outcome)
                                : Aborted(outcome, "Cannot open settings file by path: ");
  }
  return call.name == "read" ? Aborted(outcome, "Cannot read settings file by path: ") : world.Ran(outcome, kNewest);
}

// What the page of failures says of a launch in which this went wrong.
bool EndedAsDocumented(const MadeCall& call, LaunchWorld& world, const Outcome& outcome) {
  if (IsAboutMemory(call)) {
    return world.Ran(outcome) || EndedWith255(outcome) || EndedForWantOfMemory(outcome);
  }
  if (call.path == kSettingsPath) {
    return EndedAsForSettings(call, world, outcome);
  }
  if (call.name == "readlink") {
    return Aborted(outcome, "netloader/netloaderquorcommon/src/dotnet_settings(88): Expression failed.");
  }
  if (call.path == world.Runtime().FxrFolder()) {
    return world.Ran(outcome) || EndedWith255(outcome);
  }
  // One version cannot be used; the other one can.
  return world.Ran(outcome, call.path.starts_with(world.Runtime().FxrFolder().string()) ? kOlder : kNewest) ||
         world.Ran(outcome, kNewest);
}

class SystemCalls : public testing::Test {
 protected:
  void SetUp() override {
    const std::string why =
        IsInstrumented() ? "an instrumented launch makes calls of its own" : WhyCallsCannotBeWatched();
    if (!why.empty()) {
      GTEST_SKIP() << why;
    }
  }
};

// Gives how many calls the launcher made.
int ExpectDocumentedEnds(LaunchWorld& world, int number) {
  for (std::size_t index = 0;; ++index) {
    FaultyLaunch launch = LaunchWithFault(world.Launch(), number, index);
    if (!launch.failed) {
      return launch.calls;
    }
    const MadeCall& call = *launch.failed;
    SCOPED_TRACE(std::to_string(number) + ": " + call.name + " " + call.path + ": " + std::strerror(call.error));
    if (call.name == "close") {
      ForgetWhatIsLeftOpen(launch);
    }
    EXPECT_TRUE(EndedAsDocumented(call, world, launch.outcome)) << launch.outcome;
    EXPECT_FALSE(launch.has_left_something_open);
  }
}

TEST_F(SystemCalls, ALaunchOfWhichOneFailsEndsAsDocumented) {
  LaunchWorld world;

  int number = 1;
  while (number <= ExpectDocumentedEnds(world, number)) {
    ++number;
  }

  EXPECT_GT(number, 30) << "hardly any call was seen";
}

// What a call that reads gives at most, of the file that stands at `path`.
CallWatcher ReadingAByteAtATime(const fs::path& path) {
  return [path](const WatchedCall& call) {
    const bool isRead = call.Name() == "read" || call.Name() == "pread64";
    return isRead && call.Path() == path ? ReadAtMost(call, 1) : Decision::Make();
  };
}

TEST_F(SystemCalls, SettingsThatComeAByteAtATimeAreReadWhole) {
  const LaunchWorld world;

  EXPECT_TRUE(world.Ran(world.Launch().Watched(ReadingAByteAtATime(kSettingsPath)).Run(), kNewest));
}

TEST_F(SystemCalls, ALibraryThatComesAByteAtATimeIsPassedOver) {
  LaunchWorld world;

  const auto watcher = ReadingAByteAtATime(world.Runtime().HostFile(kNewest));

  EXPECT_TRUE(world.Ran(world.Launch().Watched(watcher).Run(), kOlder));
}

}  // namespace
}  // namespace tests
