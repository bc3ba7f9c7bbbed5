#include "doctor/judge/verdict.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <utility>

#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

// What a launch that runs the application depends on; a test spoils one thing.
struct SoundEvidence {
  SoundEvidence() {
    settings.path = "/settings/not/there";
    settings.root = u"/root";
    runtime.root = u"/root";
    runtime.discovery.fxr_folder = u"/root/host/fxr";
    VersionReport version;
    version.name = "6.0.36";
    version.library = u"/root/host/fxr/6.0.36/libhostfxr.so";
    version.is_candidate = true;
    version.standing = Standing::kChosen;
    runtime.versions = {version};
    runtime.decisive = 0;
    application.context = ContextProbe{{ChildEnd::kFinished}, 0, true};
    start.probe = {{ChildEnd::kFinished}, true};
  }

  void IsFatal(const ChildResult& end) {
    Version().standing = Standing::kFatal;
    Version().child = end;
  }
  VersionReport& Version() { return runtime.versions.at(0); }
  Verdict Judged() const { return Judge({&settings, &runtime, &application, &start, &launcher}); }

  SettingsReport settings;
  RuntimeReport runtime;
  ApplicationReport application;
  StartReport start;
  LauncherReport launcher{"/opt/launcher", true, true};
};

using namespace std::chrono_literals;

constexpr std::int32_t kFrameworkMissing = static_cast<std::int32_t>(0x80008096);

ChildResult TimedOut(std::chrono::milliseconds limit) {
  ChildResult child{ChildEnd::kTimedOut};
  child.limit = limit;
  return child;
}

struct Row {
  Outcome outcome;
  const char* line;
  void (*spoil)(SoundEvidence& world);
};

const Row kRows[] = {
    {Outcome::kRuns, "A launch would run the application.", [](SoundEvidence&) {}},
    {Outcome::kRuns, "The host accepts the application; starting the runtime was not tried.",
     [](SoundEvidence& world) { world.start.probe.was_tried = false; }},
    {Outcome::kNotStarted,
     "A launch would end with status 0 without running the application: the runtime does not start (0x80008089).",
     [](SoundEvidence& world) { world.start.probe.result = static_cast<std::int32_t>(0x80008089); }},
    {Outcome::kDies, "A launch would die of SIGSEGV: the runtime does not start (SIGSEGV).",
     [](SoundEvidence& world) {
       world.start.probe.child = {ChildEnd::kCrashed, SIGSEGV};
     }},
    {Outcome::kDies, "A launch would die of SIGABRT: app.dll is missing.",
     [](SoundEvidence& world) {
       world.start.broken = {{"/app.dll", Need::kMain, true, false, true, "missing"}};
     }},
    {Outcome::kDies, "A launch would die of SIGBUS: libclrjit.so is broken: cut short.",
     [](SoundEvidence& world) {
       world.start.probe.was_tried = false;
       world.start.broken = {{"/net/libclrjit.so", Need::kStart, true, true, false, "cut short"}};
     }},
    {Outcome::kRuns, "Nothing was loaded: the files look sound; starting the runtime was not tried.",
     [](SoundEvidence& world) { world.application.context.reset(); }},
    {Outcome::kRuns, "A launch would run the application, with the older runtime 6.0.36.",
     [](SoundEvidence& world) {
       world.runtime.versions.insert(world.runtime.versions.begin(),
                                     {"6.0.40", u"/root/host/fxr/6.0.40/libhostfxr.so", true});
       world.runtime.decisive = 1;
     }},
    {Outcome::kRuns, "A launch would run the application, which ends as soon as it needs ICU, which is missing.",
     [](SoundEvidence& world) { world.start.has_icu = false; }},
    {Outcome::kRuns, "A launch would run the application, which ends as soon as it uses System.Console.dll.",
     [](SoundEvidence& world) {
       world.start.broken = {{"/net/System.Console.dll", Need::kLater, true, false, false, "missing", true}};
     }},
    {Outcome::kAborts, "A launch would abort: the settings file is missing.",
     [](SoundEvidence& world) {
       world.settings.end = SettingsEnd::kUnreadable;
       world.settings.failure = "cannot open";
     }},
    {Outcome::kAborts, "A launch would abort: the settings file cannot be read.",
     [](SoundEvidence& world) {
       world.settings.path = "/";
       world.settings.end = SettingsEnd::kUnreadable;
       world.settings.failure = "cannot open";
     }},
    {Outcome::kHangs, "A launch would wait for ever: the settings file is a pipe.",
     [](SoundEvidence& world) { world.settings.end = SettingsEnd::kNeverEnds; }},
    {Outcome::kAborts, "A launch would abort: line 7 of the settings is not UTF-8.",
     [](SoundEvidence& world) {
       world.settings.end = SettingsEnd::kMalformed;
       world.settings.failure = "std::bad_cast";
       world.settings.entries.push_back({7, "k", "\xff", LineUse::kMalformed});
     }},
    {Outcome::kStatus255, "A launch would end with status 255: the settings do not name a runtime root.",
     [](SoundEvidence& world) { world.settings.end = SettingsEnd::kNoRoot; }},
    {Outcome::kAborts, "A launch would abort: the folder of the executable cannot be determined.",
     [](SoundEvidence& world) {
       world.settings.end = SettingsEnd::kNoProductFolder;
       world.settings.folder_failure = "no folder\nand more";
     }},
    {Outcome::kStatus255, "A launch would end with status 255: the runtime root /root-not-there is not there.",
     [](SoundEvidence& world) {
       world.runtime.root = u"/root-not-there";
       world.runtime.discovery.state = netloader::FxrFolderState::kNoStatus;
     }},
    {Outcome::kStatus255, "A launch would end with status 255: no .NET runtime is installed under /.",
     [](SoundEvidence& world) {
       world.runtime.root = u"/";
       world.runtime.discovery.state = netloader::FxrFolderState::kNoStatus;
     }},
    {Outcome::kStatus255, "A launch would end with status 255: /root/host/fxr is a symbolic link.",
     [](SoundEvidence& world) { world.runtime.discovery.state = netloader::FxrFolderState::kIsLink; }},
    {Outcome::kStatus255, "A launch would end with status 255: /root/host/fxr is not a folder.",
     [](SoundEvidence& world) { world.runtime.discovery.state = netloader::FxrFolderState::kNotAFolder; }},
    {Outcome::kStatus255, "A launch would end with status 255: /root/host/fxr cannot be searched.",
     [](SoundEvidence& world) { world.runtime.discovery.state = netloader::FxrFolderState::kUnreadable; }},
    {Outcome::kAborts, "A launch would abort: the name of a version folder is not valid text.",
     [](SoundEvidence& world) { world.runtime.failure = "std::bad_cast"; }},
    {Outcome::kStatus255, "A launch would end with status 255: no .NET 6.0 runtime is installed under /root.",
     [](SoundEvidence& world) {
       world.runtime.decisive.reset();
       world.Version().is_candidate = false;
     }},
    {Outcome::kStatus255, "A launch would end with status 255: the only .NET 6.0 runtime, 6.0.36, cannot be loaded.",
     [](SoundEvidence& world) { world.runtime.decisive.reset(); }},
    {Outcome::kStatus255, "A launch would end with status 255: none of the 2 .NET 6.0 runtimes can be loaded.",
     [](SoundEvidence& world) {
       world.runtime.versions.push_back(world.Version());
       world.runtime.decisive.reset();
     }},
    {Outcome::kDies, "A launch would die of SIGBUS: /root/host/fxr/6.0.36/libhostfxr.so crashes while it is loaded.",
     [](SoundEvidence& world) {
       world.IsFatal({ChildEnd::kCrashed, SIGBUS});
     }},
    {Outcome::kExits,
     "A launch would end with status 17: /root/host/fxr/6.0.36/libhostfxr.so ends the process while it is loaded.",
     [](SoundEvidence& world) {
       world.IsFatal({ChildEnd::kExited, 17});
     }},
    {Outcome::kNotKnown, "Not known: loading /root/host/fxr/6.0.36/libhostfxr.so did not finish within 10 s.",
     [](SoundEvidence& world) { world.IsFatal(TimedOut(10s)); }},
    {Outcome::kAborts,
     "A launch would abort: /root/host/fxr/6.0.36/libhostfxr.so throws an exception while it is loaded.",
     [](SoundEvidence& world) {
       world.IsFatal({ChildEnd::kThrew, 0, {}, "its words"});
     }},
    {Outcome::kAborts,
     "A launch would abort: /root/host/fxr/6.0.36/libhostfxr.so throws an exception while it is loaded.",
     [](SoundEvidence& world) { world.IsFatal({ChildEnd::kThrewUnknown}); }},
    {Outcome::kStatus255,
     "A launch would end with status 255: the host refuses the application: a framework is missing.",
     [](SoundEvidence& world) { world.application.context->result = kFrameworkMissing; }},
    {Outcome::kStatus255, "A launch would end with status 255: the host refuses the application.",
     [](SoundEvidence& world) { world.application.context->result = 1; }},
    {Outcome::kStatus255,
     "A launch would end with status 255: the host accepts the application and gives nothing to run it with.",
     [](SoundEvidence& world) { world.application.context->has_handle = false; }},
    {Outcome::kDies, "A launch would die of SIGSEGV: the host crashes while it prepares the application.",
     [](SoundEvidence& world) {
       world.application.context->child = {ChildEnd::kCrashed, SIGSEGV};
     }},
    {Outcome::kNotKnown, "Not known: the host did not prepare the application within 0.25 s.",
     [](SoundEvidence& world) { world.application.context->child = TimedOut(250ms); }},
    {Outcome::kNotKnown, "Not known: starting the runtime did not finish within 60 s.",
     [](SoundEvidence& world) { world.start.probe.child = TimedOut(60s); }},
};

TEST(Verdict, EveryEndOfALaunchHasItsLine) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.line);
    SoundEvidence world;
    row.spoil(world);

    const Verdict verdict = world.Judged();

    EXPECT_EQ(verdict.outcome, row.outcome);
    EXPECT_EQ(VerdictLine(verdict), row.line);
    EXPECT_EQ(verdict.cause.cure.empty(), !verdict.HasCause()) << "what to do about it";
    for (const std::string& text : {verdict.cause.text, verdict.cause.meaning, verdict.cause.cure}) {
      EXPECT_EQ(text.find('{'), std::string::npos) << text;
    }
  }
}

TEST(Verdict, WhatDidNotFinishIsGivenSixTimesAsLong) {
  SoundEvidence world;
  world.IsFatal(TimedOut(10s));
  EXPECT_EQ(world.Judged().cause.cure, "grellin_doctor --time-limit 60");
  EXPECT_EQ(world.Judged().cause.meaning, "A slow disk can be the reason.");

  world.IsFatal(TimedOut(250ms));
  EXPECT_EQ(world.Judged().cause.cure, "grellin_doctor --time-limit 2");
}

TEST(Verdict, ALauncherThatCannotBeginDecidesBeforeAllElse) {
  const Row rows[] = {
      {Outcome::kNotBegun, "A launch would not begin: the launcher is missing.",
       [](SoundEvidence& world) { world.launcher.is_there = false; }},
      {Outcome::kNotBegun, "A launch would not begin: this user may not execute the launcher.",
       [](SoundEvidence& world) { world.launcher.may_be_executed = false; }},
      {Outcome::kNotBegun, "A launch would not begin: the launcher cannot be loaded with its own libraries.",
       [](SoundEvidence& world) { world.launcher.lacks = "libstdc++.so.6: file too short"; }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.line);
    SoundEvidence world;
    world.settings.end = SettingsEnd::kNoRoot;
    row.spoil(world);

    EXPECT_EQ(world.Judged().outcome, row.outcome);
    EXPECT_EQ(VerdictLine(world.Judged()), row.line);
  }
}

TEST(Verdict, ALauncherThatItsModeClosesIsOpenedByItsModeOnly) {
  const tests::TempFolder folder;
  SoundEvidence world;
  world.launcher = {folder / "launcher", true, false};
  tests::WriteFile(world.launcher.path, "");

  std::filesystem::permissions(world.launcher.path, std::filesystem::perms(0644));
  EXPECT_EQ(world.Judged().cause.cure, "chmod u+rx " + world.launcher.path);
  std::filesystem::permissions(world.launcher.path, std::filesystem::perms(0755));
  EXPECT_EQ(world.Judged().cause.cure, "mount its file system with exec, and let this user enter each folder above it");
}

TEST(Verdict, WhatComesFirstOnTheRoadDecides) {
  for (const Row& row : kRows) {
    if (row.outcome == Outcome::kRuns) {
      continue;
    }
    SCOPED_TRACE(row.line);
    SoundEvidence world;
    row.spoil(world);
    world.settings.end = SettingsEnd::kUnreadable;
    world.settings.failure = "first of all";

    EXPECT_EQ(world.Judged().message, "Error occurred: first of all");
  }
}

TEST(Verdict, ThrownWordsAreTheMessage) {
  SoundEvidence words;
  words.IsFatal({ChildEnd::kThrew, 0, {}, "its words"});
  SoundEvidence none;
  none.IsFatal({ChildEnd::kThrewUnknown});

  EXPECT_EQ(words.Judged().message, "Error occurred: its words");
  EXPECT_EQ(none.Judged().message, "Unknown failure occurred");
}

TEST(Verdict, TheHostsStatusIsInTheMeaning) {
  SoundEvidence world;
  world.application.context->result = kFrameworkMissing;

  EXPECT_EQ(world.Judged().cause.meaning, "(hostfxr: 0x80008096 FrameworkMissingFailure)");
}

TEST(Verdict, TheFirstWarningThatExplainsTheEndBecomesItsCause) {
  SoundEvidence world;
  world.settings.end = SettingsEnd::kNoRoot;
  Verdict verdict = world.Judged();
  Warnings warnings = {{Finding::kTmpEmpty, "a", "no end of a launch"},
                       {Finding::kCarriageReturnAtEnd, "b", "explains another end"},
                       {Finding::kWrongLetterCase, "c", "is about the log folder", "", "", false},
                       {Finding::kWrongLetterCase, "d", "first"},
                       {Finding::kBlankAroundKey, "e", "second"}};

  Explain(verdict, warnings);

  EXPECT_EQ(verdict.cause.text, "first");
  EXPECT_EQ(VerdictLine(verdict), "A launch would end with status 255: first.");
  std::string decisive;
  for (const Warning& warning : warnings) {
    decisive += warning.decides ? warning.place : "";
  }
  EXPECT_EQ(decisive, "de");
}

TEST(Verdict, NoWarningExplainsAHostThatEndsTheProcessOrIsNotDone) {
  for (const ChildEnd end :
       {ChildEnd::kThrew, ChildEnd::kThrewUnknown, ChildEnd::kExited, ChildEnd::kCrashed, ChildEnd::kTimedOut}) {
    SoundEvidence world;
    world.application.context->child = {end};
    Verdict verdict = world.Judged();
    const Finding before = verdict.cause.finding;
    Warnings warnings = {{Finding::kMissingAssembly, "a", "text"},
                         {Finding::kMissingFramework, "b", "text"},
                         {Finding::kMalformedConfig, "c", "text"}};

    Explain(verdict, warnings);

    EXPECT_EQ(verdict.cause.finding, before) << static_cast<int>(end);
    EXPECT_TRUE(std::ranges::none_of(warnings, &Warning::decides));
  }
}

TEST(Verdict, NoWarningExplainsALaunchThatRuns) {
  Verdict verdict = SoundEvidence().Judged();
  Warnings warnings;
  for (const FindingText& row : kFindings) {
    warnings.push_back({row.value, "place", "text"});
  }

  Explain(verdict, warnings);

  EXPECT_FALSE(verdict.HasCause());
  EXPECT_TRUE(std::ranges::none_of(warnings, &Warning::decides));
}

TEST(Verdict, TheMessageIsTheLaunchersAndWhole) {
  SoundEvidence world;
  world.settings.end = SettingsEnd::kNoProductFolder;
  world.settings.folder_failure = "one\ntwo";

  EXPECT_EQ(world.Judged().message, "Error occurred: one\ntwo");
}

TEST(Verdict, NumbersAreForMachines) {
  SoundEvidence runs;
  EXPECT_EQ(runs.Judged().code, 0);
  EXPECT_EQ(runs.Judged().tried, Tried::kStart);
  runs.application.context.reset();
  EXPECT_EQ(runs.Judged().tried, Tried::kFiles);
  SoundEvidence refused;
  refused.settings.end = SettingsEnd::kNoRoot;
  EXPECT_EQ(refused.Judged().code, 255);
}

// The statuses that shells have for these.
TEST(Verdict, ALauncherThatCannotBeginEndsWithTheStatusOfAShell) {
  const std::pair<LauncherReport, int> rows[] = {
      {{"/launcher"}, 127}, {{"/launcher", true, false}, 126}, {{"/launcher", true, true, "libgcc_s.so.1"}, 127}};
  for (const auto& [launcher, status] : rows) {
    SoundEvidence world;
    world.launcher = launcher;

    EXPECT_EQ(world.Judged().outcome, Outcome::kNotBegun) << status;
    EXPECT_EQ(world.Judged().code, status);
  }
}

}  // namespace
}  // namespace doctor
