#include "doctor/examine/environment_report.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "doctor/judge/near_misses/near_misses.h"
#include "tests/support/scoped_environment.h"

namespace doctor {
namespace {

using tests::ScopedEnvironment;

std::string Story(const EnvironmentReport& report) {
  std::string story;
  for (const VariableReport& variable : report.variables) {
    story += variable.name + " " + variable.value.value_or("(removed)") + " now " + variable.now.value_or("(not set)") +
             "\n";
  }
  return story;
}

TEST(EnvironmentReport, ReportsWhatALaunchSetsAndRemovesAndWhatIsThereNow) {
  ScopedEnvironment environment;
  environment.Set("DOTNET_MULTILEVEL_LOOKUP", "1").Remove("COMPlus_GCName").Set("DOTNET_GCName", "");
  environment.Set("DOTNET_STARTUP_HOOKS", "\xff").Remove("DOTNET_EnableDiagnostics");

  const EnvironmentReport report = ExamineEnvironment({});

  EXPECT_EQ(Story(report),
            "DOTNET_MULTILEVEL_LOOKUP 0 now 1\n"
            "COMPlus_GCName (removed) now (not set)\n"
            "DOTNET_GCName (removed) now \n"
            "DOTNET_STARTUP_HOOKS (removed) now \xff\n"
            "DOTNET_EnableDiagnostics 0 now (not set)\n");
  EXPECT_EQ(tests::Variable("DOTNET_MULTILEVEL_LOOKUP"), "1") << "only looked at";
}

TEST(EnvironmentReport, ListsWhatElseIsObeyedByName) {
  ScopedEnvironment environment;
  environment.Set("LD_DOCTOR_TEST", "1=2").Set("COMPlus_DoctorTest", "").Set("DOTNET_GCName", "x").Set("OTHER", "y");

  std::string names;
  for (const ObeyedVariable& variable : ExamineEnvironment({}).obeyed) {
    names += variable.name + "=" + variable.value + ";";
  }

  const auto first = names.find("COMPlus_DoctorTest=;");
  const auto second = names.find("LD_DOCTOR_TEST=1=2;");
  EXPECT_LT(first, second) << names;
  EXPECT_NE(second, std::string::npos) << names;
  EXPECT_EQ(names.find("DOTNET_GCName"), std::string::npos) << names;
  EXPECT_EQ(names.find("OTHER"), std::string::npos) << names;
}

TEST(EnvironmentReport, TheLogFolderIsThatOfALaunch) {
  SettingsReport settings;
  settings.taken_log_folder = u"/log";

  EXPECT_EQ(ExamineEnvironment(settings).log_folder, "/log");
}

TEST(EnvironmentNearMisses, AnEmptyTmpIsNamedWhereItDecides) {
  ScopedEnvironment environment;
  SettingsReport with_folder;
  with_folder.names_log_folder = true;

  environment.Set("TMP", "");
  const Warnings warnings = EnvironmentNearMisses({});
  ASSERT_EQ(warnings.size(), 1U);
  EXPECT_EQ(warnings[0].finding, Finding::kTmpEmpty);
  EXPECT_TRUE(EnvironmentNearMisses(with_folder).empty());
  environment.Set("TMP", "/t");
  EXPECT_TRUE(EnvironmentNearMisses({}).empty());
  environment.Remove("TMP");
  EXPECT_TRUE(EnvironmentNearMisses({}).empty());
}

TEST(EnvironmentNearMisses, TooFewFilesAreNamedWithTheirLimit) {
  ScopedEnvironment environment;
  environment.Remove("TMP");
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  Warnings warnings[2];
  for (const rlim_t limit : {rlim_t{7}, rlim_t{8}}) {
    const rlimit few{limit, before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &few);
    warnings[limit - 7] = EnvironmentNearMisses({});
  }
  ::setrlimit(RLIMIT_NOFILE, &before);

  ASSERT_EQ(warnings[0].size(), 1U);
  EXPECT_EQ(warnings[0][0].finding, Finding::kTooFewFiles);
  EXPECT_NE(warnings[0][0].text.find('7'), std::string::npos) << warnings[0][0].text;
  EXPECT_TRUE(warnings[1].empty());
}

}  // namespace
}  // namespace doctor
