// Memory that fails at one place of a launch, or from there on.
#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include "tests/faults/launch_world.h"
#include "tests/support/temp_folder.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

// A launch needs about 130 allocations. Whoever needs that many more is in a loop.
constexpr int kMost = 10'000;

enum class Lack { kOnce, kForEver };

// A launch in which an allocation failed.
struct LaunchInNeed {
  Outcome outcome;
  std::string report;  // Whether one failed, where, and what was open at the exit.

  [[nodiscard]] bool HasFailed() const { return report.find("main") != std::string::npos; }
  [[nodiscard]] bool HasFailedBeforeMain() const { return report.starts_with("before main\n"); }
  [[nodiscard]] bool HasLeftSomethingOpen() const { return report.find("open descriptor") != std::string::npos; }
};

LaunchInNeed LaunchLacking(Command launch, int number, Lack lack) {
  const TempFolder folder;
  launch.Variable("LD_PRELOAD", FAILING_ALLOCATION)
      .Variable("FAILING_ALLOCATION", std::to_string(number))
      .Variable("FAILING_REPORT", folder / "report");
  if (lack == Lack::kForEver) {
    launch.Variable("FAILING_FOR_EVER", "1");
  }
  const Outcome outcome = launch.Run();
  return {outcome, fs::exists(folder / "report") ? ReadFile(folder / "report") : ""};
}

// Constants are made before main, where nobody catches what is thrown.
bool EndedBeforeMain(const Outcome& outcome) {
  return outcome.signal == SIGABRT && outcome.err.starts_with("terminate called after throwing an instance of '") &&
         outcome.err.find("what():  std::bad_alloc") != std::string::npos;
}

// The conversions of paths report a want of memory as a result code, which is thrown in an exception of its own.
bool EndedForWantOfMemory(const Outcome& outcome) {
  return Aborted(outcome, "std::bad_alloc\n") ||
         (Aborted(outcome, "netloader/") && outcome.err.find("tov.result=0x80000041") != std::string::npos);
}

class Memory : public testing::Test {
 protected:
  void SetUp() override {
    if (IsInstrumented()) {
      GTEST_SKIP() << "an instrumented launch takes memory of its own";
    }
  }

  // Lets each allocation fail in turn, alone and with all that follow, and checks how the launch ended.
  template <typename EndedAsDocumented>
  void FailEach(const Command& launch, EndedAsDocumented endedAsDocumented) {
    for (const Lack lack : {Lack::kOnce, Lack::kForEver}) {
      SCOPED_TRACE(lack == Lack::kOnce ? "once" : "for ever");
      int number = 1;
      while (number < kMost && FailOne(launch, number, lack, endedAsDocumented)) {
        ++number;
      }
      EXPECT_GT(number, 20) << "hardly any allocation was counted";
      EXPECT_LT(number, kMost) << "a launch without an end";
    }
  }

 private:
  // False when the launch got by with fewer.
  template <typename EndedAsDocumented>
  bool FailOne(const Command& launch, int number, Lack lack, EndedAsDocumented endedAsDocumented) {
    SCOPED_TRACE("allocation " + std::to_string(number));
    const LaunchInNeed launched = LaunchLacking(launch, number, lack);
    if (launched.HasFailedBeforeMain()) {
      EXPECT_TRUE(EndedBeforeMain(launched.outcome)) << launched.outcome;
    } else {
      EXPECT_TRUE(EndedForWantOfMemory(launched.outcome) || endedAsDocumented(launched.outcome)) << launched.outcome;
    }
    EXPECT_FALSE(launched.HasLeftSomethingOpen());
    return launched.HasFailed();
  }
};

TEST_F(Memory, ALaunchThatLacksItAbortsOrPassesAVersionOver) {
  const LaunchWorld world;

  FailEach(world.Launch(), [&](const Outcome& outcome) { return EndedWith255(outcome) || world.Ran(outcome); });
}

TEST_F(Memory, ALaunchWithoutSettingsThatLacksItAborts) {
  const Command launch = Launcher();

  FailEach(launch, [](const Outcome& outcome) { return Aborted(outcome, "Cannot open settings file by path: "); });
}

TEST_F(Memory, ALaunchWithNothingToLoadThatLacksItAbortsOrEndsWith255) {
  LaunchWorld world;
  fs::remove_all(world.Runtime().FxrFolder());
  world.Runtime().AddFile("6.0.3/libhostfxr.so", "broken").AddFile("6.0.2/other").AddLink("6.0.1/libhostfxr.so", "/");

  FailEach(world.Launch(), EndedWith255);
}

}  // namespace
}  // namespace tests
