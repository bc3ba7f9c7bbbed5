#include "doctor/judge/verdict.h"

#include <gtest/gtest.h>

#include <csignal>

#include "foundation/result_code.h"

namespace doctor {
namespace {

// What a launch that runs the application depends on; a test spoils one thing.
struct World {
  World() {
    settings.path = "/settings";
    settings.root = u"/root";
    runtime.discovery.fxr_folder = u"/root/host/fxr";
    VersionReport version;
    version.name = "6.0.36";
    version.library = u"/root/host/fxr/6.0.36/libhostfxr.so";
    version.is_candidate = true;
    version.standing = Standing::kChosen;
    runtime.versions = {version};
    runtime.decisive = 0;
    application.context = ContextProbe{{ChildEnd::kFinished}, 0, true};
  }

  VersionReport& Version() { return runtime.versions.at(0); }
  Verdict Judged() const { return Judge({&settings, &runtime, &application}); }

  SettingsReport settings;
  RuntimeReport runtime;
  ApplicationReport application;
};

constexpr std::int32_t kFrameworkMissing = static_cast<std::int32_t>(0x80008096);

struct Row {
  Outcome outcome;
  const char* line;
  void (*spoil)(World& world);
};

const Row kRows[] = {
    {Outcome::kRuns, "A launch would run the application.", [](World&) {}},
    {Outcome::kRuns, "A launch would run the application, as far as can be told without loading anything.",
     [](World& world) { world.application.context.reset(); }},
    {Outcome::kAborts,
     "A launch would abort with 'Error occurred: cannot open': the settings file cannot be read: Permission denied",
     [](World& world) {
       world.settings.end = SettingsEnd::kUnreadable;
       world.settings.failure = "cannot open";
       world.settings.reason = "Permission denied";
     }},
    {Outcome::kAborts, "A launch would abort with 'Error occurred: std::bad_cast': line 7 of the settings is not UTF-8",
     [](World& world) {
       world.settings.end = SettingsEnd::kMalformed;
       world.settings.failure = "std::bad_cast";
       world.settings.entries.push_back({7, "k", "\xff", LineUse::kMalformed});
     }},
    {Outcome::kStatus255, "A launch would end with status 255: the settings name no runtime root",
     [](World& world) { world.settings.end = SettingsEnd::kNoRoot; }},
    {Outcome::kAborts,
     "A launch would abort with 'Error occurred: no folder': the folder of the executable cannot be told",
     [](World& world) {
       world.settings.end = SettingsEnd::kNoProductFolder;
       world.settings.folder_failure = "no folder\nand more";
     }},
    {Outcome::kStatus255, "A launch would end with status 255: /root/host/fxr is a symbolic link",
     [](World& world) { world.runtime.discovery.state = netloader::FxrFolderState::kIsLink; }},
    {Outcome::kStatus255, "A launch would end with status 255: /root/host/fxr is no folder",
     [](World& world) { world.runtime.discovery.state = netloader::FxrFolderState::kNotAFolder; }},
    {Outcome::kAborts,
     "A launch would abort with 'Error occurred: std::bad_cast': the name of a version folder is no valid text",
     [](World& world) { world.runtime.failure = "std::bad_cast"; }},
    {Outcome::kStatus255, "A launch would end with status 255: no version of the runtime fits",
     [](World& world) {
       world.runtime.decisive.reset();
       world.Version().is_candidate = false;
     }},
    {Outcome::kStatus255, "A launch would end with status 255: the one version that fits cannot be loaded",
     [](World& world) { world.runtime.decisive.reset(); }},
    {Outcome::kStatus255, "A launch would end with status 255: none of the 2 versions that fit can be loaded",
     [](World& world) {
       world.runtime.versions.push_back(world.Version());
       world.runtime.decisive.reset();
     }},
    {Outcome::kDies, "A launch would die of SIGBUS while loading /root/host/fxr/6.0.36/libhostfxr.so",
     [](World& world) {
       world.Version().standing = Standing::kFatal;
       world.Version().child = {ChildEnd::kCrashed, SIGBUS};
     }},
    {Outcome::kExits, "A launch would end with status 17 while loading /root/host/fxr/6.0.36/libhostfxr.so",
     [](World& world) {
       world.Version().standing = Standing::kFatal;
       world.Version().child = {ChildEnd::kExited, 17};
     }},
    {Outcome::kHangs, "A launch would hang while loading /root/host/fxr/6.0.36/libhostfxr.so",
     [](World& world) {
       world.Version().standing = Standing::kFatal;
       world.Version().child = {ChildEnd::kTimedOut};
     }},
    {Outcome::kAborts,
     "A launch would abort with 'Error occurred: its words': while loading /root/host/fxr/6.0.36/libhostfxr.so",
     [](World& world) {
       world.Version().standing = Standing::kFatal;
       world.Version().child = {ChildEnd::kThrew, 0, {}, "its words"};
     }},
    {Outcome::kAborts,
     "A launch would abort with 'Unknown failure occurred': while loading /root/host/fxr/6.0.36/libhostfxr.so",
     [](World& world) {
       world.Version().standing = Standing::kFatal;
       world.Version().child = {ChildEnd::kThrewUnknown};
     }},
    {Outcome::kStatus255,
     "A launch would end with status 255: the host refuses the application with 0x80008096 (FrameworkMissingFailure)",
     [](World& world) { world.application.context->result = kFrameworkMissing; }},
    {Outcome::kStatus255,
     "A launch would end with status 255: the host refuses the application with 0x00000001 "
     "(Success_HostAlreadyInitialized)",
     [](World& world) { world.application.context->result = 1; }},
    {Outcome::kStatus255, "A launch would end with status 255: the host gives no context",
     [](World& world) { world.application.context->has_handle = false; }},
    {Outcome::kDies, "A launch would die of SIGSEGV while the host prepares the application",
     [](World& world) {
       world.application.context->child = {ChildEnd::kCrashed, SIGSEGV};
     }},
    {Outcome::kHangs, "A launch would hang while the host prepares the application",
     [](World& world) { world.application.context->child = {ChildEnd::kTimedOut}; }},
};

TEST(Verdict, EveryEndOfALaunchIsToldInOneLine) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.line);
    World world;
    row.spoil(world);

    const Verdict verdict = world.Judged();

    EXPECT_EQ(verdict.outcome, row.outcome);
    EXPECT_EQ(VerdictLine(verdict), row.line);
    EXPECT_EQ(verdict.cure.empty(), row.outcome == Outcome::kRuns) << "what to do about it";
  }
}

TEST(Verdict, WhatComesFirstOnTheRoadDecides) {
  for (const Row& row : kRows) {
    if (row.outcome == Outcome::kRuns) {
      continue;
    }
    SCOPED_TRACE(row.line);
    World world;
    row.spoil(world);
    world.settings.end = SettingsEnd::kUnreadable;
    world.settings.failure = "first of all";

    EXPECT_EQ(world.Judged().message, "Error occurred: first of all");
  }
}

TEST(Verdict, AFolderThatCannotBeEnteredIsToldWithTheReason) {
  World world;
  world.runtime.discovery.state = netloader::FxrFolderState::kUnreadable;
  world.runtime.discovery.result = 0;
  const std::string words(tov::ResultCodeMessage(0));

  EXPECT_EQ(world.Judged().reason, "/root/host/fxr cannot be entered: " + words);
  world.runtime.discovery.state = netloader::FxrFolderState::kNoStatus;
  EXPECT_EQ(world.Judged().reason, "/root/host/fxr: " + words);
}

TEST(Verdict, TheMessageIsTheLaunchersAndWhole) {
  World world;
  world.settings.end = SettingsEnd::kNoProductFolder;
  world.settings.folder_failure = "one\ntwo";

  EXPECT_EQ(world.Judged().message, "Error occurred: one\ntwo");
}

TEST(Verdict, NumbersAreForMachines) {
  World runs;
  EXPECT_EQ(runs.Judged().code, 0);
  EXPECT_TRUE(runs.Judged().is_probed);
  runs.application.context.reset();
  EXPECT_FALSE(runs.Judged().is_probed);
  World refused;
  refused.settings.end = SettingsEnd::kNoRoot;
  EXPECT_EQ(refused.Judged().code, 255);
}

}  // namespace
}  // namespace doctor
