// Faults that meet the doctor and not the launch it is asked about: it must never call a launch sound that is not.
#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "tests/faults/launch_world.h"
#include "tests/support/doctor.h"
#include "tests/support/temp_folder.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

constexpr int kWouldRun = 0;
constexpr int kWouldNot = 1;
constexpr int kNotKnown = 3;

// A world in which a launch ends with 255, since nothing in it can be loaded.
class UnsoundWorld : public LaunchWorld {
 public:
  UnsoundWorld() {
    fs::remove_all(Runtime().FxrFolder());
    Runtime().AddFile("6.0.3/libhostfxr.so", "broken");
  }
};

struct DoctorInNeed {
  Outcome outcome;
  bool has_failed;  // Whether an allocation did.
};

DoctorInNeed AskLackingMemory(int number) {
  const TempFolder folder;
  const Outcome outcome = Doctor()
                              .Variable("LD_PRELOAD", FAILING_ALLOCATION)
                              .Variable("FAILING_ALLOCATION", std::to_string(number))
                              .Variable("FAILING_REPORT", folder / "report")
                              .Run();
  const std::string report = fs::exists(folder / "report") ? ReadFile(folder / "report") : "";
  return {outcome, report.find("main") != std::string::npos};
}

// Fails a part of the allocations, one in each run: all of them would take too long. Gives how many runs there were.
template <typename Check>
int FailAllocations(Check check) {
  constexpr int kStep = 13;
  int runs = 0;
  for (int number = 1;; number += kStep, ++runs) {
    SCOPED_TRACE("allocation " + std::to_string(number));
    const DoctorInNeed asked = AskLackingMemory(number);
    if (!asked.has_failed) {
      return runs;
    }
    check(asked.outcome);
  }
}

class DoctorFaults : public testing::Test {
 protected:
  void SetUp() override {
    if (IsSanitized()) {
      GTEST_SKIP() << "a sanitizer allocates and calls for itself";
    }
  }
};

// The C and C++ libraries end a process in some places where they have no memory: that is no verdict either.
TEST_F(DoctorFaults, ADoctorThatLacksMemoryGivesTheTrueVerdictOrNone) {
  const LaunchWorld world;

  const int runs = FailAllocations([](const Outcome& outcome) {
    EXPECT_TRUE(outcome.status == kWouldRun || outcome.status == kNotKnown || outcome.signal != 0) << outcome;
  });

  EXPECT_GT(runs, 20);
}

TEST_F(DoctorFaults, ADoctorThatLacksMemoryNeverCallsAFailingLaunchSound) {
  const UnsoundWorld world;

  const int runs = FailAllocations([](const Outcome& outcome) {
    EXPECT_TRUE(outcome.status == kWouldNot || outcome.status == kNotKnown || outcome.signal != 0) << outcome;
  });

  EXPECT_GT(runs, 20);
}

// Gives how many calls the doctor and its children made since it had begun. The one of that number fails.
int ExpectNoGreenWithFailingCall(int number, int error) {
  int calls = 0;
  std::string failed;
  const Outcome outcome = Doctor()
                              .Watched([&](const WatchedCall& call) {
                                const std::string name = call.Name();
                                const bool hasBegun = calls > 0 || call.Path().find("/locale") != std::string::npos;
                                const bool mayFail = !name.empty() && name != "brk" && name != "exit_group";
                                if (!hasBegun || !mayFail || ++calls != number) {
                                  return Decision::Make();
                                }
                                failed = name + " " + call.Path();
                                return Decision::Fail(error);
                              })
                              .Run();
  SCOPED_TRACE(failed + ", error " + std::to_string(error));
  EXPECT_TRUE(outcome.status == kWouldNot || outcome.status == kNotKnown) << outcome;
  return calls;
}

TEST_F(DoctorFaults, ADoctorOfWhichACallFailsNeverCallsAFailingLaunchSound) {
  if (const std::string why = WhyCallsCannotBeWatched(); !why.empty()) {
    GTEST_SKIP() << why;
  }
  const UnsoundWorld world;
  for (const int error : {EIO, ENOMEM}) {
    int number = 1;
    while (number <= ExpectNoGreenWithFailingCall(number, error)) {
      ++number;
    }
    EXPECT_GT(number, 100) << "hardly any call was seen";
  }
}

}  // namespace
}  // namespace tests
