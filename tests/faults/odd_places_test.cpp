// Places of the settings and the runtime that are none of the usual ones.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <fstream>
#include <string>
#include <utility>

#include "tests/faults/launch_world.h"
#include "tests/support/text.h"
#include "tests/support/watched_calls.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

// Where ten thousand folders are made in no time.
constexpr const char* kInMemory = "/var/opt/morvath";

TEST(OddSettings, ADeviceIsReadLikeAFile) {
  LaunchWorld world;
  fs::remove(kSettingsPath);
  fs::create_symlink("/dev/null", kSettingsPath);

  EXPECT_TRUE(EndedWith255(world.Launch().Run()));
}

TEST(OddSettings, ADeviceWithoutAnEndIsReadUntilMemoryEnds) {
  if (IsSanitized()) {
    GTEST_SKIP() << "a sanitizer needs more memory";
  }
  LaunchWorld world;
  fs::remove(kSettingsPath);
  fs::create_symlink("/dev/zero", kSettingsPath);
  const auto limit = [] {
    const rlimit memory{64 * 1024 * 1024, 64 * 1024 * 1024};
    ::setrlimit(RLIMIT_AS, &memory);
  };

  EXPECT_TRUE(Aborted(world.Launch().Before(limit).Run(), "std::bad_alloc\n"));
}

TEST(OddSettings, AFifoIsReadToItsWritersEnd) {
  if (const std::string why = WhyCallsCannotBeWatched(); !why.empty()) {
    GTEST_SKIP() << why;
  }
  LaunchWorld world;
  const std::string settings = ReadFile(kSettingsPath);
  fs::remove(kSettingsPath);
  ASSERT_EQ(::mkfifo(std::string(kSettingsPath).c_str(), 0600), 0);
  // Nobody waits: the fifo is open at both ends until the launch has it open, too.
  const int writer = ::open(std::string(kSettingsPath).c_str(), O_RDWR);
  ASSERT_EQ(::write(writer, settings.data(), settings.size()), static_cast<ssize_t>(settings.size()));
  bool isOpen = true;

  const Outcome outcome = world.Launch()
                              .Watched([&](const WatchedCall& call) {
                                if (isOpen && call.Name() == "read" && call.Path() == kSettingsPath) {
                                  ::close(writer);
                                  isOpen = false;
                                }
                                return Decision::Make();
                              })
                              .Run();

  EXPECT_TRUE(world.Ran(outcome, kNewest)) << outcome;
}

TEST(OddSettings, AFileThatGrowsWhileItIsReadIsReadToItsEnd) {
  if (const std::string why = WhyCallsCannotBeWatched(); !why.empty()) {
    GTEST_SKIP() << why;
  }
  LaunchWorld world;
  const std::string settings = ReadFile(kSettingsPath);
  world.Settings().Write("DotnetRootFolder=/nowhere\n");
  int linesLeft = 100;

  const Outcome outcome = world.Launch()
                              .Watched([&](const WatchedCall& call) {
                                if (call.Name() == "read" && call.Path() == kSettingsPath && linesLeft-- > 0) {
                                  std::ofstream(std::string(kSettingsPath), std::ios::app)
                                      << (linesLeft == 0 ? settings : "k=v\n");
                                }
                                return Decision::Make();
                              })
                              .Run();

  EXPECT_TRUE(world.Ran(outcome, kNewest)) << outcome;
}

// Every byte that a name may hold, in the names of files and folders beside the versions and of versions.
TEST(OddFolders, AnyByteMayStandInTheNames) {
  LaunchWorld world;
  for (int byte = 1; byte <= 0xff; ++byte) {
    const std::string name(1, static_cast<char>(byte));
    if (name != "/" && name != ".") {
      world.Runtime().AddFile(name + "/libhostfxr.so", "broken").AddFile("6.0.1" + name + "/libhostfxr.so", "broken");
    }
  }

  EXPECT_TRUE(world.Ran(world.Launch().Run(), kNewest));
}

// A folder that holds a folder that holds a folder ..., taken apart when destroyed. No path leads to its bottom.
class NestedFolders {
 public:
  NestedFolders(fs::path top, int depth) : top_(std::move(top)), aside_(top_.string() + "-aside") {
    fs::create_directories(top_);
    for (; depth > 0; --depth) {
      fs::create_directory(aside_);
      fs::rename(top_, aside_ / "n");
      fs::rename(aside_, top_);
    }
  }
  ~NestedFolders() {
    while (fs::exists(top_ / "n")) {
      fs::rename(top_ / "n", aside_);
      fs::remove(top_);
      fs::rename(aside_, top_);
    }
  }
  NestedFolders(const NestedFolders&) = delete;
  NestedFolders& operator=(const NestedFolders&) = delete;

 private:
  fs::path top_;
  fs::path aside_;
};

// The folders that are open at once reach their limit some way down: what is below is left alone.
TEST(OddFolders, TenThousandNestedOnesAreLeftAloneBelowTheLimitOfDescriptors) {
  LaunchWorld world(kInMemory);
  const NestedFolders nested(world.Runtime().FxrFolder() / "nested", 10'000);

  for (const rlim_t limit : {rlim_t{64}, rlim_t{1'024}}) {
    SCOPED_TRACE(limit);
    const auto limited = [limit] {
      const rlimit files{limit, limit};
      ::setrlimit(RLIMIT_NOFILE, &files);
    };
    EXPECT_TRUE(world.Ran(world.Launch().Before(limited).Run(), kNewest));
  }
}

}  // namespace
}  // namespace tests
