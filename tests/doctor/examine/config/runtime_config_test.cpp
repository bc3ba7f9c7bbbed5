#include "doctor/examine/config/runtime_config.h"

#include <gtest/gtest.h>

#include "doctor/judge/words/names.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

RuntimeConfig Read(const std::string& text, const RollForwardVariables& variables = {}) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "a.json", text);
  return ReadRuntimeConfig(folder / "a.json", variables);
}

// "A 6.0.0 Minor, B 7.0.0 Disable without patches"
std::string Story(const RuntimeConfig& config) {
  std::string story;
  for (const FrameworkReference& each : config.frameworks) {
    story += (story.empty() ? "" : ", ") + each.name + " " + each.version + " " +
             std::string(RowOf(kRollForwards, each.roll_forward).code) +
             (each.applies_patches ? "" : " without patches");
  }
  return story;
}

std::string Options(const std::string& members) {
  return R"({"runtimeOptions": {)" + members + "}}";
}

TEST(RuntimeConfig, FrameworksAndHowFarTheyRollForwardAreRead) {
  struct Row {
    const char* members;
    const char* story;
  };
  const Row rows[] = {
      {"", ""},
      {R"("framework": {"name": "A", "version": "6.0.0"})", "A 6.0.0 Minor"},
      {R"("frameworks": [{"name": "A", "version": "6.0.0"}, {"name": "B", "version": "x"}])",
       "A 6.0.0 Minor, B x Minor"},
      {R"("rollForward": "latestmajor", "framework": {"name": "A", "version": "1"})", "A 1 LatestMajor"},
      {R"("rollForward": "Major", "framework": {"name": "A", "version": "1", "rollForward": "Disable"})",
       "A 1 Disable"},
      {R"("rollForwardOnNoCandidateFx": 0, "framework": {"name": "A", "version": "1"})", "A 1 LatestPatch"},
      {R"("rollForwardOnNoCandidateFx": 2, "framework": {"name": "A", "version": "1"})", "A 1 Major"},
      {R"("rollForwardOnNoCandidateFx": 9, "framework": {"name": "A", "version": "1"})", "A 1 Minor"},
      {R"("applyPatches": false, "framework": {"name": "A", "version": "1"})", "A 1 Minor without patches"},
      {R"("frameworks": {"name": "A"})", ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.members);
    const RuntimeConfig config = Read(Options(row.members));

    EXPECT_EQ(Story(config), row.story);
    EXPECT_EQ(config.fault, ConfigFault::kNone);
  }
}

TEST(RuntimeConfig, VariablesCountBeforeOrBehindTheFile) {
  const std::string plain = Options(R"("framework": {"name": "A", "version": "1"})");
  const std::string major = Options(R"("rollForward": "Major", "framework": {"name": "A", "version": "1"})");

  EXPECT_EQ(Story(Read(major, {"LatestPatch", "", false})), "A 1 LatestPatch");
  EXPECT_EQ(Story(Read(plain, {"", "0", false})), "A 1 LatestPatch");
  EXPECT_EQ(Story(Read(major, {"", "0", false})), "A 1 Major");
  EXPECT_EQ(Read(plain, {"Nonsense", "", false}).fault, ConfigFault::kUnknownVariable);
}

TEST(RuntimeConfig, TheVariablesOfALaunchAreThoseThatTheHostReads) {
  tests::ScopedEnvironment environment;
  environment.Set("DOTNET_ROLL_FORWARD", "Major").Set("DOTNET_ROLL_FORWARD_ON_NO_CANDIDATE_FX", "2");
  environment.Set("DOTNET_ROLL_FORWARD_TO_PRERELEASE", "1");

  const RollForwardVariables set = VariablesOfLaunch();
  environment.Set("DOTNET_ROLL_FORWARD_TO_PRERELEASE", "true");

  EXPECT_EQ(set.roll_forward, "Major");
  EXPECT_EQ(set.on_no_candidate, "2");
  EXPECT_TRUE(set.takes_prerelease);
  EXPECT_FALSE(VariablesOfLaunch().takes_prerelease) << "no number";
}

TEST(RuntimeConfig, WhatTheHostRefusesIsAFault) {
  struct Row {
    const char* text;
    ConfigFault fault;
    const char* detail;
  };
  const Row rows[] = {
      {"{}", ConfigFault::kNoOptions, ""},
      {R"({"runtimeOptions": 5})", ConfigFault::kNoOptions, ""},
      {R"({"runtimeOptions": {"frameworks": 6}})", ConfigFault::kMisshapen, "frameworks"},
      {R"({"runtimeOptions": {"configProperties": "x"}})", ConfigFault::kMisshapen, "configProperties"},
      {R"({"runtimeOptions": {"framework": "A"}})", ConfigFault::kNoName, ""},
      {R"({"runtimeOptions": {"framework": {}}})", ConfigFault::kNoName, ""},
      {R"({"runtimeOptions": {"frameworks": [null]}})", ConfigFault::kNoName, ""},
      {R"({"runtimeOptions": {"framework": {"name": "A"}}})", ConfigFault::kNoVersion, "A"},
      {R"({"runtimeOptions": {"framework": {"name": "A", "version": 6}}})", ConfigFault::kMisshapen, "version"},
      {R"({"runtimeOptions": {"rollForward": 1}})", ConfigFault::kMisshapen, "rollForward"},
      {R"({"runtimeOptions": {"tfm": 6}})", ConfigFault::kMisshapen, "tfm"},
      {R"({"runtimeOptions": {"rollForward": "Up"}})", ConfigFault::kUnknownRollForward, "Up"},
      {R"({"runtimeOptions": {"rollForward": "Major", "applyPatches": true}})", ConfigFault::kMixedSettings, ""},
      {R"({"runtimeOptions": {"framework": {"name": "A", "version": "1"},
                              "frameworks": [{"name": "A", "version": "1"}]}})",
       ConfigFault::kNamedTwice, "A"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    const RuntimeConfig config = Read(row.text);

    EXPECT_EQ(config.fault, row.fault);
    EXPECT_EQ(config.detail, row.detail);
  }
}

TEST(RuntimeConfig, InvariantGlobalizationIsRead) {
  EXPECT_TRUE(Read(Options(R"("configProperties": {"System.Globalization.Invariant": true})")).icu.is_invariant);
  EXPECT_TRUE(Read(Options(R"("configProperties": {"System.Globalization.Invariant": "True"})")).icu.is_invariant);
  EXPECT_FALSE(Read(Options(R"("configProperties": {"System.Globalization.Invariant": false})")).icu.is_invariant);
  EXPECT_FALSE(Read(Options("")).icu.is_invariant);
  EXPECT_EQ(Read(Options(R"("configProperties": {"System.Globalization.AppLocalIcu": "72.1"})")).icu.own, "72.1");
}

}  // namespace
}  // namespace doctor
