#include "doctor/judge/diagnosis.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "tests/doctor/installation.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/settings_file.h"
#include "tests/support/stand_in_host.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

using namespace std::chrono_literals;
using tests::Installation;

constexpr std::string_view kOtherRoot = "/opt/morvath/other";

Question Installed() {
  Question question;
  question.settings_path = tests::kSettingsPath;
  question.places = {{}, {}, {std::string(kOtherRoot)}, {}, {}};  // Not what this machine has.
  return question;
}

std::string Codes(const Diagnosis& diagnosis) {
  std::string codes;
  for (const Warning& warning : diagnosis.warnings) {
    codes.append(codes.empty() ? "" : " ").append(RowOf(kFindings, warning.finding).code);
  }
  return codes;
}

TEST(Diagnosis, AHealthyServerRuns) {
  Installation installation;
  installation.Healthy();

  const Diagnosis diagnosis = Diagnose(Installed());

  EXPECT_EQ(diagnosis.verdict.outcome, Outcome::kRuns);
  EXPECT_EQ(diagnosis.verdict.tried, Tried::kStart);
  EXPECT_TRUE(diagnosis.application.context && diagnosis.application.context->IsUsable());
  EXPECT_EQ(Codes(diagnosis), "");
}

TEST(Diagnosis, WarningsFollowTheRoad) {
  Installation installation;
  installation.Healthy().Settings("X=1\nX=2\nDotnetRootFolder=/opt/morvath/dotnet\n");
  installation.Remove(std::string(tests::kApplication) + ".dll");
  std::filesystem::create_directory_symlink("/tmp", std::string(tests::kFxrFolder) + "/6.0.0");
  tests::ScopedEnvironment environment;
  environment.Set("TMP", "");

  EXPECT_EQ(Codes(Diagnose(Installed())), "key-given-twice folder-is-link tmp-empty missing-assembly");
}

TEST(Diagnosis, NoFrameworkIsMissedWhereThereIsNoRuntimeAtAll) {
  Installation installation;
  installation.Healthy().Settings("DotnetRootFolder=/nothing/there\n");

  EXPECT_EQ(Codes(Diagnose(Installed())), "");
}

TEST(Diagnosis, AnotherRootTakesThePlaceOfTheSettingsOne) {
  Installation installation;
  installation.Healthy().Settings("DotnetRootFolder=/nothing/there\n");
  Question question = Installed();

  EXPECT_EQ(Diagnose(question).verdict.outcome, Outcome::kStatus255);
  question.root = tests::kRoot;
  EXPECT_EQ(Diagnose(question).verdict.outcome, Outcome::kRuns);
}

TEST(Diagnosis, AMistakeInTheSettingsIsTheCauseOnlyWhereTheirRootIsAskedAbout) {
  Installation installation;
  installation.Healthy().Settings("DotnetRootFolder=/opt/morvath/dotnet \n");
  Question question = Installed();

  EXPECT_EQ(Diagnose(question).verdict.cause.finding, Finding::kBlankAtEnd);
  question.root = "/nothing/there";
  EXPECT_EQ(Diagnose(question).verdict.cause.finding, Finding::kRootMissing);
}

TEST(Diagnosis, OtherSettingsTakeThePlaceOfTheInstalledOnes) {
  Installation installation;
  installation.Healthy();
  const tests::TempFolder folder;
  tests::WriteFile(folder / "settings.ini", "DotnetRootFolder=/nothing/there\n");
  Question question = Installed();
  question.settings_path = folder / "settings.ini";

  EXPECT_EQ(Diagnose(question).verdict.outcome, Outcome::kStatus255);
}

TEST(Diagnosis, NoContextIsCreatedWhereALaunchDoesNotComeThatFar) {
  Installation installation;
  installation.Healthy().OddHost("6.0.99", "comes_Exit");

  const Diagnosis diagnosis = Diagnose(Installed());

  EXPECT_EQ(diagnosis.verdict.outcome, Outcome::kExits);
  EXPECT_EQ(diagnosis.verdict.code, 17);
  EXPECT_FALSE(diagnosis.application.context);
}

TEST(Diagnosis, WithoutProbingNothingIsLoaded) {
  Installation installation;
  installation.Healthy().OddHost("6.0.99", "comes_Exit");
  const tests::StandInHost host;
  const tests::ScopedEnvironment environment(host.Environment());
  Question question = Installed();
  question.probe = false;

  const Diagnosis diagnosis = Diagnose(question);

  EXPECT_EQ(diagnosis.verdict.outcome, Outcome::kRuns);
  EXPECT_EQ(diagnosis.verdict.tried, Tried::kFiles);
  EXPECT_FALSE(diagnosis.application.context);
  EXPECT_TRUE(host.Calls().empty());
}

TEST(Diagnosis, ALibraryThatHangsIsAFindingAtTheLimit) {
  Installation installation;
  installation.Healthy().OddHost("6.0.99", "comes_Hang");
  Question question = Installed();
  question.patience.limit = 200ms;

  const Diagnosis diagnosis = Diagnose(question);

  EXPECT_EQ(diagnosis.verdict.outcome, Outcome::kNotKnown);
  EXPECT_EQ(diagnosis.runtime->versions.at(0).reason, VersionReason::kTimedOut);
}

TEST(Diagnosis, ThereIsOneOfNothingAtAll) {
  const Installation installation;

  const Diagnosis diagnosis = Diagnose(Installed());

  EXPECT_EQ(diagnosis.verdict.outcome, Outcome::kAborts);
  EXPECT_FALSE(diagnosis.runtime);
  EXPECT_EQ(diagnosis.application.assembly_file.state, FileState::kMissing);
  EXPECT_EQ(diagnosis.environment.variables.size(), 5U);
}

// A whole runtime that the settings do not name.
void MoveRuntimeAway() {
  std::filesystem::rename(tests::kRoot, kOtherRoot);
}

TEST(Diagnosis, ARuntimeElsewhereIsTheCureOfARootWithoutOne) {
  struct Row {
    const char* problem;
    const char* settings;
  };
  const Row rows[] = {
      {"the runtime root /opt/morvath/dotnet is not there", "X=1\nDotnetRootFolder=/opt/morvath/dotnet\n"},
      {"the settings do not name a runtime root", "X=1"},
      {"no .NET runtime is installed under /opt/morvath", "DotnetRootFolder=/opt/morvath\n"},
      {"the runtime root '/nothing/there' is not there", "DotnetRootFolder='/nothing/there'\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.settings);
    Installation installation;
    installation.Healthy().Settings(row.settings);
    MoveRuntimeAway();

    const Diagnosis diagnosis = Diagnose(Installed());
    const int status = std::system(diagnosis.verdict.cause.cure.c_str());

    EXPECT_EQ(RowOf(kFindings, diagnosis.verdict.cause.finding).code, "runtime-elsewhere");
    EXPECT_EQ(diagnosis.verdict.cause.text, row.problem);
    EXPECT_EQ(diagnosis.verdict.cause.meaning, "The .NET runtime 6.0.36 under /opt/morvath/other would do.");
    EXPECT_EQ(status, 0) << diagnosis.verdict.cause.cure;
    EXPECT_EQ(Diagnose(Installed()).verdict.outcome, Outcome::kRuns);
  }
}

TEST(Diagnosis, ARuntimeElsewhereServesSettingsThatAreMissing) {
  for (const std::string& missing : {std::string(tests::kSettingsPath), std::string("/var/opt/morvath/quor")}) {
    Installation installation;
    installation.Healthy().Remove(missing);
    MoveRuntimeAway();

    const Diagnosis diagnosis = Diagnose(Installed());
    const int status = std::system(diagnosis.verdict.cause.cure.c_str());

    EXPECT_EQ(diagnosis.verdict.cause.finding, Finding::kRuntimeElsewhere);
    EXPECT_EQ(status, 0) << diagnosis.verdict.cause.cure;
    EXPECT_EQ(Diagnose(Installed()).verdict.outcome, Outcome::kRuns);
  }
}

TEST(Diagnosis, AMistakeIsTheCauseWhereWhatWasMeantServes) {
  Installation installation;
  installation.Healthy();
  std::filesystem::copy(tests::kRoot, kOtherRoot, std::filesystem::copy_options::recursive);
  struct Row {
    const char* code;
    const char* settings;
  };
  const Row rows[] = {
      {"carriage-return-at-end", "DotnetRootFolder=/opt/morvath/dotnet\r\n"},
      {"wrong-letter-case", "dotnetRootFolder=/opt/morvath/dotnet\n"},
      {"key-given-twice", "DotnetRootFolder=/opt/morvath/dotnet\nDotnetRootFolder=/nothing\n"},
      {"root-is-fxr", "DotnetRootFolder=/opt/morvath/dotnet/host/fxr\n"},
  };
  for (const Row& row : rows) {
    installation.Settings(row.settings);

    EXPECT_EQ(RowOf(kFindings, Diagnose(Installed()).verdict.cause.finding).code, row.code);
  }
}

TEST(Diagnosis, WhatWasLeftOutIsCountedWhereAnotherRootIsNamedAsWell) {
  Installation installation;
  installation.Healthy();
  MoveRuntimeAway();
  std::string lines;
  for (int line = 1; line <= 1501; ++line) {
    lines += "Other=1\n";
  }
  installation.Settings(lines + "DotnetRootFolder=/opt/morvath/dotnet\n");

  const Diagnosis diagnosis = Diagnose(Installed());

  EXPECT_EQ(diagnosis.verdict.cause.finding, Finding::kRuntimeElsewhere);
  EXPECT_EQ(diagnosis.warnings.left_out, 500U);
}

TEST(Diagnosis, ARootThatOnlyHasToBeOpenedIsNotReplaced) {
  Installation installation;
  installation.Healthy();
  std::filesystem::copy(tests::kRoot, kOtherRoot, std::filesystem::copy_options::recursive);
  std::filesystem::rename(tests::kFxrFolder, "/opt/morvath/fxr");
  std::filesystem::create_directory_symlink("/opt/morvath/fxr", tests::kFxrFolder);

  EXPECT_EQ(Diagnose(Installed()).verdict.cause.finding, Finding::kFolderIsLink);
}

TEST(Diagnosis, SettingsThatAreNoFileAreMendedBeforeARuntimeElsewhereIsWrittenIntoThem) {
  Installation installation;
  installation.Healthy().NoSettings();
  MoveRuntimeAway();
  std::filesystem::create_symlink("/dev/null", tests::kSettingsPath);

  EXPECT_EQ(Diagnose(Installed()).verdict.cause.finding, Finding::kSettingsNotAFile);
}

TEST(Diagnosis, ARuntimeElsewhereThatRefusesTheApplicationIsNoCure) {
  Installation installation;
  installation.Healthy();
  MoveRuntimeAway();
  tests::StandInHost host;
  host.Returns(tests::HostFunction::kInitialize, static_cast<int>(0x80008096)).GivesNoHandle();
  const tests::ScopedEnvironment environment(host.Environment());

  const Diagnosis diagnosis = Diagnose(Installed());

  EXPECT_EQ(diagnosis.verdict.cause.finding, Finding::kRootMissing);
  ASSERT_EQ(diagnosis.other_roots.size(), 1U);
  EXPECT_EQ(diagnosis.other_roots[0].state, RootState::kRefused);
}

TEST(Diagnosis, WithoutLoadingSoundFilesWithAFrameworkAreEnough) {
  Installation installation;
  installation.Healthy();
  MoveRuntimeAway();
  Question question = Installed();
  question.probe = false;

  EXPECT_EQ(Diagnose(question).verdict.cause.meaning, "The .NET runtime 6.0.36 under /opt/morvath/other looks sound.");
}

TEST(Diagnosis, AHostWithoutTheFrameworksThatStandElsewhereIsOfAnotherFeed) {
  Installation installation;
  installation.Healthy();
  std::filesystem::create_directory(kOtherRoot);
  std::filesystem::rename(std::string(tests::kRoot) + "/shared", std::string(kOtherRoot) + "/shared");
  tests::StandInHost host;
  host.Returns(tests::HostFunction::kInitialize, static_cast<int>(0x80008096)).GivesNoHandle();
  const tests::ScopedEnvironment environment(host.Environment());

  const Warning cause = Diagnose(Installed()).verdict.cause;

  EXPECT_EQ(cause.finding, Finding::kTwoFeeds);
  EXPECT_EQ(cause.text,
            "the host of .NET is under /opt/morvath/dotnet, and its frameworks are under /opt/morvath/other");
  EXPECT_TRUE(cause.cure.starts_with("remove the .NET packages of both feeds")) << cause.cure;
}

TEST(Diagnosis, FrameworksWithoutTheHostThatStandsElsewhereAreOfAnotherFeed) {
  Installation installation;
  installation.Healthy();
  std::filesystem::create_directory(kOtherRoot);
  std::filesystem::rename(std::string(tests::kRoot) + "/host", std::string(kOtherRoot) + "/host");

  const Warning cause = Diagnose(Installed()).verdict.cause;

  EXPECT_EQ(cause.text,
            "the host of .NET is under /opt/morvath/other, and its frameworks are under /opt/morvath/dotnet");
}

}  // namespace
}  // namespace doctor
