#include "doctor/judge/near_misses/host_answer.h"

#include <gtest/gtest.h>

namespace doctor {
namespace {

// That asks for one framework of this version.
ApplicationReport Asking(const std::string& framework, const std::string& version, RollForward rollForward,
                         const std::vector<std::string>& found = {}) {
  ApplicationReport report;
  report.root = "/net";
  report.frameworks = {{framework, version, rollForward, "/app.runtimeconfig.json", false, found}};
  return report;
}

std::string Value(const ApplicationReport& report, const std::string& name) {
  return MissingFramework(report).value().values.at(name);
}

TEST(MissingFramework, IsInstalledInAVersionThatServes) {
  const std::pair<RollForward, const char*> rows[] = {
      {RollForward::kDisable, "the .NET runtime 6.1.20"},
      {RollForward::kLatestPatch, "the .NET runtime 6.1.20 or a newer 6.1"},
      {RollForward::kMinor, "the .NET runtime 6.1.20 or a newer 6.1"},
      {RollForward::kLatestMinor, "the .NET runtime 6.1.20 or a newer 6.1"},
      {RollForward::kMajor, "the .NET runtime 6.1.20 or newer"},
      {RollForward::kLatestMajor, "the .NET runtime 6.1.20 or newer"},
  };
  for (const auto& [rollForward, product] : rows) {
    EXPECT_EQ(Value(Asking("Microsoft.NETCore.App", "6.1.20", rollForward), "product"), product);
  }
  EXPECT_EQ(Value(Asking("Microsoft.NETCore.App", "six", RollForward::kMinor), "product"), "the .NET runtime six");
}

TEST(MissingFramework, IsInstalledByTheNameOfItsProduct) {
  const std::pair<const char*, const char*> rows[] = {
      {"Microsoft.AspNetCore.App", "the ASP.NET Core runtime 6.0.1"},
      {"Microsoft.WindowsDesktop.App",
       "the product for Linux: this one is made for Windows, and needs its runtime 6.0.1"},
      {"Other.App", "Other.App 6.0.1"},
  };
  for (const auto& [framework, product] : rows) {
    EXPECT_EQ(Value(Asking(framework, "6.0.1", RollForward::kDisable), "product"), product);
  }
}

TEST(MissingFramework, IsSaidBesideWhatIsThere) {
  using Found = std::vector<std::string>;
  const std::pair<Found, const char*> rows[] = {
      {{}, ", and there is none under /net"},
      {{"5.0.1", "6.0.1"}, ", and 6.0.1 is the newest under /net"},
      {{"7.0.1"}, "; under /net there is 7.0.1, and roll-forward is Disable"},
      {{"6.0.2"}, "; under /net there is 6.0.2, and roll-forward is Disable"},
      {{"7.0.1", "7.0.2"}, "; under /net there are 7.0.1 and 7.0.2, and roll-forward is Disable"},
      {{"7.0.1", "7.0.2", "7.0.3", "7.0.4", "7.0.5", "7.0.6"},
       "; under /net there are 7.0.1, 7.0.2, 7.0.3, 7.0.4, 7.0.5 and 7.0.6, and roll-forward is Disable"},
      {{"7.0.1", "7.0.2", "7.0.3", "7.0.4", "7.0.5", "7.0.6", "7.0.7"},
       "; under /net there are among others 7.0.2, 7.0.3, 7.0.4, 7.0.5, 7.0.6 and 7.0.7, and roll-forward is Disable"},
  };
  for (const auto& [found, there] : rows) {
    EXPECT_EQ(Value(Asking("Some.App", "6.0.2", RollForward::kDisable, found), "there"), there);
  }
  EXPECT_EQ(Value(Asking("Some.App", "six", RollForward::kDisable, {"6.0.1"}), "there"),
            ", and 'six' is not a version");
}

TEST(MissingFramework, IsTheFirstThatIsKnownToBeMissing) {
  ApplicationReport report = Asking("Second.App", "6.0.1", RollForward::kMinor);
  report.frameworks.insert(report.frameworks.begin(), {{"Unknown.App", "6.0.1"}, {"First.App", "6.0.1"}});
  report.frameworks[1].is_there = true;

  EXPECT_EQ(Value(report, "framework"), "Second.App");
  report.frameworks.pop_back();
  EXPECT_FALSE(MissingFramework(report));
}

TEST(HostAnswer, TheSourceIsWhatTheHostSaysOrTheFileThatNamesIt) {
  ApplicationReport report = Asking("Some.App", "6.0.1", RollForward::kMinor);
  EXPECT_EQ(Value(report, "source"), "/app.runtimeconfig.json says so.");

  report.context = ContextProbe{{ChildEnd::kFinished}, static_cast<std::int32_t>(0x80008096)};
  EXPECT_EQ(Value(report, "source"), "(hostfxr: 0x80008096 FrameworkMissingFailure)");

  report.context = ContextProbe{{ChildEnd::kFinished}, 0, true};
  EXPECT_FALSE(MissingFramework(report)) << "the host accepts the application";
}

TEST(HostAnswer, VersionsThatDoNotGoTogetherAreNamed) {
  ApplicationReport report;
  report.runtime_config.path = "/app.runtimeconfig.json";
  EXPECT_FALSE(ConflictingFrameworks(report));

  report.conflict = {"Some.App", "5.0.1", "6.0.1"};
  const Clue clue = ConflictingFrameworks(report).value();

  EXPECT_EQ(clue.place, "/app.runtimeconfig.json");
  EXPECT_EQ(clue.values.at("framework"), "Some.App");
  EXPECT_EQ(clue.values.at("lower"), "5.0.1");
  EXPECT_EQ(clue.values.at("higher"), "6.0.1");
}

}  // namespace
}  // namespace doctor
