// Hosts of every temper, and executables in odd places: does a launch end as the doctor says?
#include <gtest/gtest.h>

#include <climits>
#include <csignal>
#include <string>

#include "tests/prediction/known_world.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

using enum HostFunction;

StandInHost& WithHost(KnownWorld& world) {
  world.runtime.AddHost("6.0.36");
  return world.host;
}

TEST(PredictedHosts, HowTheyPrepareTheApplicationDecides) {
  const KnownCase cases[] = {
      {"well", [](KnownWorld& world) { WithHost(world); }, "runs", "6.0.36"},
      {"with a null handle", [](KnownWorld& world) { WithHost(world).GivesNoHandle(); }, "status-255", "6.0.36"},
      {"with an error number", [](KnownWorld& world) { WithHost(world).SetsErrno(kInitialize, 9); }, "runs", "6.0.36"},
      {"with words and a refusal",
       [](KnownWorld& world) { WithHost(world).Says(kInitialize, "no such framework").Returns(kInitialize, -1); },
       "status-255", "6.0.36"},
      {"with a refusal, and it could not be closed",
       [](KnownWorld& world) { WithHost(world).Returns(kInitialize, 1).Throws(kClose, "words"); }, "status-255",
       "6.0.36"},
      {"with an exception", [](KnownWorld& world) { WithHost(world).Throws(kInitialize, "words"); }, "aborts",
       "6.0.36"},
      {"with an exception of two lines", [](KnownWorld& world) { WithHost(world).Throws(kInitialize, "two\nlines"); },
       "aborts", "6.0.36"},
      {"with an exception without words", [](KnownWorld& world) { WithHost(world).Throws(kInitialize, ""); }, "aborts",
       "6.0.36"},
      {"with a thrown number", [](KnownWorld& world) { WithHost(world).Throws(kInitialize, "int"); }, "aborts",
       "6.0.36"},
      {"with an exit", [](KnownWorld& world) { WithHost(world).Exits(kInitialize, 9); }, "exits", "6.0.36"},
      {"with an exit that looks well", [](KnownWorld& world) { WithHost(world).Exits(kInitialize, 0); }, "exits",
       "6.0.36"},
      {"with a crash", [](KnownWorld& world) { world.AddOddHost("6.0.36", "prepares_Crash"); }, "dies", "6.0.36"},
      {"with an abort", [](KnownWorld& world) { world.AddOddHost("6.0.36", "prepares_Abort"); }, "dies", "6.0.36"},
      {"with an exit at once", [](KnownWorld& world) { world.AddOddHost("6.0.36", "prepares_Exit"); }, "exits",
       "6.0.36"},
  };
  for (const KnownCase& known : cases) {
    Check(known);
  }
}

// The start is tried with another function than the one that runs the application; a runtime fails in both alike.
TEST(PredictedHosts, ARuntimeThatDoesNotStartIsReportedAsTheLaunchEnds) {
  constexpr int kInitFailure = static_cast<int>(0x80008089);
  const KnownCase cases[] = {
      {"with a result",
       [](KnownWorld& world) {
         WithHost(world).Returns(HostFunction::kStart, kInitFailure).Returns(kRun, kInitFailure);
       },
       "not-started", "6.0.36"},
      {"with a signal",
       [](KnownWorld& world) { WithHost(world).Dies(HostFunction::kStart, SIGSEGV).Dies(kRun, SIGSEGV); }, "dies",
       "6.0.36"},
      {"with an exit", [](KnownWorld& world) { WithHost(world).Exits(HostFunction::kStart, 9).Exits(kRun, 9); },
       "exits", "6.0.36"},
  };
  for (const KnownCase& known : cases) {
    Check(known);
  }
}

TEST(PredictedHosts, AHostThatCannotStartARuntimeByItselfIsNotAskedTo) {
  KnownWorld world;
  world.runtime.AddHost("6.0.36", HostVariant::kLacksStart);

  const Comparison comparison = Compare(world.host, world.start);

  EXPECT_EQ(comparison.difference, "");
  EXPECT_EQ(comparison.outcome, "runs");
}

TEST(PredictedHosts, EveryResultButZeroIsARefusal) {
  for (const int result : {1, 2, 3, -1, INT_MAX, INT_MIN, static_cast<int>(0x80008096)}) {
    SCOPED_TRACE(result);
    KnownWorld world;
    WithHost(world).Returns(kInitialize, result);
    world.runtime.AddHost("6.0.1");

    const Comparison comparison = Compare(world.host, world.start);

    EXPECT_EQ(comparison.difference, "");
    EXPECT_EQ(comparison.outcome, "status-255");
  }
}

TEST(PredictedHosts, WhatTheApplicationDoesIsItsOwnAffair) {
  const KnownCase cases[] = {
      {"it fails", [](KnownWorld& world) { WithHost(world).Returns(kRun, 3); }, "runs", "6.0.36"},
      {"it exits", [](KnownWorld& world) { WithHost(world).Exits(kRun, 7); }, "runs", "6.0.36"},
      {"it throws", [](KnownWorld& world) { WithHost(world).Throws(kRun, "words"); }, "runs", "6.0.36"},
      {"closing fails", [](KnownWorld& world) { WithHost(world).Returns(kClose, 3); }, "runs", "6.0.36"},
  };
  for (const KnownCase& known : cases) {
    Check(known);
  }
}

TEST(PredictedHosts, AHostThatThrowsWhenItIsClosedAbortsAsTheDoctorSaw) {
  for (const char* what : {"words", "int"}) {
    SCOPED_TRACE(what);
    KnownWorld world;
    WithHost(world).Throws(kClose, what);

    const Comparison comparison = Compare(world.host, world.start);

    EXPECT_EQ(comparison.difference, "");
    EXPECT_EQ(comparison.outcome, "aborts");
  }
}

// A good older version beneath does not help once the newer one has ended the process.
TEST(PredictedHosts, OneThatEndsTheProcessWhileItLoadsIsDecisive) {
  const KnownCase cases[] = {
      {"a crash", [](KnownWorld& world) { world.AddOddHost("6.0.37", "comes_Crash"); }, "dies", "6.0.37"},
      {"a bus error", [](KnownWorld& world) { world.AddOddHost("6.0.37", "comes_BusError"); }, "dies", "6.0.37"},
      {"an abort", [](KnownWorld& world) { world.AddOddHost("6.0.37", "comes_Abort"); }, "dies", "6.0.37"},
      {"a kill", [](KnownWorld& world) { world.AddOddHost("6.0.37", "comes_Killed"); }, "dies", "6.0.37"},
      {"an exit", [](KnownWorld& world) { world.AddOddHost("6.0.37", "comes_Exit"); }, "exits", "6.0.37"},
      {"an exit that looks well", [](KnownWorld& world) { world.AddOddHost("6.0.37", "comes_ExitWell"); }, "exits",
       "6.0.37"},
      // No exception gets out of dlopen(): the C++ library ends the process.
      {"an exception", [](KnownWorld& world) { world.AddOddHost("6.0.37", "comes_ThrowError"); }, "dies", "6.0.37"},
      {"a thrown number", [](KnownWorld& world) { world.AddOddHost("6.0.37", "comes_ThrowNumber"); }, "dies", "6.0.37"},
  };
  for (const KnownCase& known : cases) {
    Check(known);

    SCOPED_TRACE("older than a good one, it is never loaded");
    KnownWorld world;
    known.lay_out(world);
    world.runtime.AddHost("6.0.38").AddHost("6.0.36");
    SCOPED_TRACE(known.name);
    const Comparison comparison = Compare(world.host, world.start);
    EXPECT_EQ(comparison.difference, "");
    EXPECT_EQ(comparison.decisive, "6.0.38");
  }
}

TEST(PredictedHosts, OneThatEndsTheProcessWhenItIsUnloadedIsSeen) {
  const KnownCase cases[] = {
      {"a crash, for want of a function", [](KnownWorld& world) { world.AddOddHost("6.0.37", "lacks_and_goes_Crash"); },
       "dies", "6.0.37"},
      {"an abort, for want of a function",
       [](KnownWorld& world) { world.AddOddHost("6.0.37", "lacks_and_goes_Abort"); }, "dies", "6.0.37"},
      {"an exit, for want of a function", [](KnownWorld& world) { world.AddOddHost("6.0.37", "lacks_and_goes_Exit"); },
       "exits", "6.0.37"},
      {"a crash after a refusal", [](KnownWorld& world) { world.AddOddHost("6.0.37", "refuses_and_goes_Crash"); },
       "dies", "6.0.37"},
      {"an abort after a refusal", [](KnownWorld& world) { world.AddOddHost("6.0.37", "refuses_and_goes_Abort"); },
       "dies", "6.0.37"},
      {"an exit after a refusal", [](KnownWorld& world) { world.AddOddHost("6.0.37", "refuses_and_goes_Exit"); },
       "exits", "6.0.37"},
  };
  for (const KnownCase& known : cases) {
    Check(known);
  }
}

TEST(PredictedHosts, AFunctionThatIsNullWithoutAnErrorTextIsARefusal) {
  KnownWorld world;
  world.runtime.AddHost("6.0.2", HostVariant::kNullRun).AddHost("6.0.1");
  world.start.variables["LD_PRELOAD"] = QUIET_DLERROR;
  world.start.variables["ASAN_OPTIONS"] = "verify_asan_link_order=0";

  const Comparison comparison = Compare(world.host, world.start);

  EXPECT_EQ(comparison.difference, "");
  EXPECT_EQ(comparison.decisive, "6.0.1");
}

// Both stand in one folder, wherever that is.
class Installation {
 public:
  void PutInto(const fs::path& folder, Start& start) {
    fs::create_directories(folder);
    fs::copy_file(LauncherFile(), folder / "loader");
    fs::copy_file(DoctorFile(), folder / "doctor");
    start.launcher = folder / "loader";
    start.doctor = folder / "doctor";
  }
};

TEST(PredictedExecutables, AFolderThatIsNotUtf8Aborts) {
  KnownWorld world;
  WithHost(world);
  const TempFolder folder;
  Installation().PutInto(folder / "\xff", world.start);

  const Comparison comparison = Compare(world.host, world.start);

  EXPECT_EQ(comparison.difference, "");
  EXPECT_EQ(comparison.outcome, "aborts");
}

TEST(PredictedExecutables, APathThatIsTooLongToReadAborts) {
  KnownWorld world;
  WithHost(world);
  const TempFolder folder("/var/opt/morvath");
  const std::string name(250, 'd');
  Installation().PutInto(folder / "leaf", world.start);
  for (int i = 0; i < 17; ++i) {  // Moved below folder after folder: no call takes a path that long.
    fs::create_directory(folder / "wrap");
    fs::rename(folder / "leaf", folder / ("wrap/" + name));
    fs::rename(folder / "wrap", folder / "leaf");
  }
  std::string way = "leaf";
  for (int i = 0; i < 15; ++i) {
    way += "/" + name;
  }
  world.start.folder = folder / way;
  world.start.launcher = "./" + name + "/" + name + "/loader";
  world.start.doctor = "./" + name + "/" + name + "/doctor";

  const Comparison comparison = Compare(world.host, world.start);

  EXPECT_EQ(comparison.difference, "");
  EXPECT_EQ(comparison.outcome, "aborts");
}

TEST(PredictedExecutables, ALinkToThemWorks) {
  KnownWorld world;
  WithHost(world);
  const TempFolder folder;
  fs::create_symlink(LauncherFile(), folder / "loader");
  fs::create_symlink(DoctorFile(), folder / "doctor");
  world.start.launcher = folder / "loader";
  world.start.doctor = folder / "doctor";

  const Comparison comparison = Compare(world.host, world.start);

  EXPECT_EQ(comparison.difference, "");
  EXPECT_EQ(comparison.outcome, "runs");
}

}  // namespace
}  // namespace tests
