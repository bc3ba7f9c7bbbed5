#include "doctor/judge/diagnosis.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "tests/doctor/installation.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/settings_file.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

using namespace std::chrono_literals;
using tests::Installation;

Question Installed() {
  Question question;
  question.settings_path = tests::kSettingsPath;
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

}  // namespace
}  // namespace doctor
