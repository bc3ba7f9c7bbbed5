#include "doctor/examine/frameworks.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

constexpr const char* kBase = "Base";
constexpr const char* kUpper = "Upper";

// A runtime root and an application's configuration.
struct World {
  World& Base(std::initializer_list<const char*> versions) {
    for (const char* version : versions) {
      Add(kBase, version);
    }
    return *this;
  }
  World& Upper(const std::string& version, const std::string& options) {
    Add(kUpper, version);
    tests::WriteFile(Folder(kUpper, version) / "Upper.runtimeconfig.json", R"({"runtimeOptions": {)" + options + "}}");
    return *this;
  }
  void Add(const std::string& name, const std::string& version) const {
    tests::WriteFile(Folder(name, version) / (name + ".deps.json"), "{}");
  }
  fs::path Folder(const std::string& name, const std::string& version) const {
    return folder / "shared" / name / version;
  }

  Frameworks Resolved(const std::string& options, const RollForwardVariables& variables = {}) const {
    tests::WriteFile(folder / "app.json", R"({"runtimeOptions": {)" + options + "}}");
    const RuntimeConfig config = ReadRuntimeConfig(folder / "app.json", variables);
    return ResolveFrameworks(config, (folder / "shared").parent_path().string(), variables);
  }

  tests::TempFolder folder;
};

// "Upper 6.0.1, Base none"
std::string Story(const Frameworks& frameworks) {
  std::string story;
  for (const FrameworkReport& each : frameworks.reports) {
    story += (story.empty() ? "" : ", ") + each.name + " " + (each.taken.empty() ? "none" : each.taken);
  }
  return story + (frameworks.conflict ? " conflict" : "") + (frameworks.broken_config ? " broken" : "");
}

std::string Single(const std::string& version, const std::string& more = "") {
  return R"("framework": {"name": "Base", "version": ")" + version + "\"}" + more;
}

TEST(Frameworks, TheVersionIsTakenThatTheRulesOfRollForwardName) {
  World world;
  world.Base({"6.0.1", "6.0.5", "6.1.0", "6.1.2", "8.0.11", "8.1.0", "9.0.0-rc.1"});
  struct Row {
    const char* version;
    const char* roll;
    const char* story;
  };
  const Row rows[] = {
      {"6.0.5", "Disable", "Base 6.0.5"},     {"6.0.3", "Disable", "Base none"},
      {"6.0.1", "LatestPatch", "Base 6.0.5"}, {"6.0.7", "LatestPatch", "Base none"},
      {"6.0.3", "Minor", "Base 6.0.5"},       {"6.0.7", "Minor", "Base 6.1.2"},
      {"5.0.0", "Minor", "Base none"},        {"6.0.3", "LatestMinor", "Base 6.1.2"},
      {"5.0.0", "Major", "Base 6.0.5"},       {"7.0.0", "Major", "Base 8.0.11"},
      {"6.0.3", "LatestMajor", "Base 8.1.0"}, {"8.2.0", "LatestMajor", "Base 9.0.0-rc.1"},
      {"6.0", "LatestMajor", "Base 8.1.0"},   {"6.0", "Minor", "Base none"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Story(world.Resolved(Single(row.version, std::string(R"(, "rollForward": ")") + row.roll + "\""))),
              row.story)
        << row.version << " " << row.roll;
  }
}

TEST(Frameworks, PrereleasesAreTakenWhereNothingElseServesOrTheVariableSaysSo) {
  World world;
  world.Base({"6.0.1", "6.0.2-preview.1", "6.0.3-rc.1", "7.0.0-preview.9", "7.0.0-preview.10"});

  EXPECT_EQ(Story(world.Resolved(Single("6.0.0"))), "Base 6.0.1");
  EXPECT_EQ(Story(world.Resolved(Single("6.0.0"), {"", "", true})), "Base 6.0.3-rc.1");
  EXPECT_EQ(Story(world.Resolved(Single("6.0.2"))), "Base 6.0.3-rc.1");
  EXPECT_EQ(Story(world.Resolved(Single("6.0.2-alpha"))), "Base 6.0.2-preview.1");
  EXPECT_EQ(Story(world.Resolved(Single("6.1.0", R"(, "rollForward": "Major")"))), "Base 7.0.0-preview.9");
}

TEST(Frameworks, PatchesAreLeftOutWhereTheFileSaysSo) {
  World world;
  world.Base({"6.0.1", "6.0.5", "6.1.0", "6.1.2"});

  EXPECT_EQ(Story(world.Resolved(Single("6.0.0", R"(, "applyPatches": false)"))), "Base 6.0.1");
  EXPECT_EQ(Story(world.Resolved(Single("6.0.7", R"(, "applyPatches": false)"))), "Base 6.1.0");
  EXPECT_EQ(Story(world.Resolved(Single("6.0.0", R"(, "applyPatches": false, "rollForwardOnNoCandidateFx": 0)"))),
            "Base none");
}

TEST(Frameworks, AFolderCountsOnlyWithTheFrameworksListOfFilesInIt) {
  World world;
  world.Base({"6.0.1"});
  fs::create_directories(world.Folder(kBase, "6.0.9"));
  fs::create_directories(world.Folder(kBase, "backup"));

  const Frameworks found = world.Resolved(Single("6.0.0"));

  EXPECT_EQ(Story(found), "Base 6.0.1");
  EXPECT_EQ(found.reports.at(0).found, std::vector<std::string>{"6.0.1"});
}

TEST(Frameworks, WhatAFrameworkNeedsItselfIsResolvedToo) {
  World world;
  world.Base({"6.0.1", "6.0.5", "6.1.0"}).Upper("6.0.9", Single("6.0.3"));
  const std::string both =
      R"("frameworks": [{"name": "Base", "version": "6.0.0"}, {"name": "Upper", "version": "6.0.0"}])";

  const Frameworks found = world.Resolved(R"("framework": {"name": "Upper", "version": "6.0.0"})");

  EXPECT_EQ(Story(found), "Upper 6.0.9, Base 6.0.5");
  EXPECT_EQ(found.reports.at(1).named_by, (world.Folder(kUpper, "6.0.9") / "Upper.runtimeconfig.json").string());
  EXPECT_EQ(Story(world.Resolved(both)), "Base 6.0.5, Upper 6.0.9");
}

TEST(Frameworks, AFrameworkThatTakesTheHighestHasWhatItNeedsTakenSo) {
  World world;
  world.Base({"6.0.1", "6.1.0"}).Upper("6.0.9", Single("6.0.0"));

  EXPECT_EQ(
      Story(world.Resolved(R"("rollForward": "LatestMajor", "framework": {"name": "Upper", "version": "6.0.0"})")),
      "Upper 6.0.9, Base 6.1.0");
}

// Of an application that asks for Base itself, and of Upper, which does so, too.
std::string Both(const World& world, const std::string& version, const std::string& rule) {
  return Story(world.Resolved(R"("frameworks": [{"name": "Base", "version": ")" + version + "\"" + rule +
                              R"(}, {"name": "Upper", "version": "6.0.0"}])"));
}

TEST(Frameworks, OfTwoRulesTheNarrowerOneCounts) {
  World world;
  world.Base({"7.0.1"}).Upper("6.0.9", Single("6.0.1", R"(, "rollForward": "LatestPatch")"));
  EXPECT_EQ(Both(world, "6.0.0", R"(, "rollForward": "Major")"), "Base none");

  World reversed;
  reversed.Base({"7.0.1"}).Upper("6.0.9", Single("6.0.0", R"(, "rollForward": "Major")"));
  EXPECT_EQ(Both(reversed, "6.0.1", R"(, "rollForward": "LatestPatch")"), "Base none");
}

TEST(Frameworks, TheHighestIsTakenWhereOneOfTwoRulesSaysSo) {
  World world;
  world.Base({"6.0.1", "6.1.0"}).Upper("6.0.9", Single("6.0.0", R"(, "rollForward": "LatestMinor")"));
  EXPECT_EQ(Both(world, "6.0.0", ""), "Base 6.1.0, Upper 6.0.9");

  World reversed;
  reversed.Base({"6.0.1", "6.1.0"}).Upper("6.0.9", Single("6.0.0"));
  EXPECT_EQ(Both(reversed, "6.0.0", R"(, "rollForward": "LatestMinor")"), "Base 6.1.0, Upper 6.0.9");
}

TEST(Frameworks, PatchesAreLeftOutWhereOneOfTwoRulesSaysSo) {
  World world;
  world.Base({"6.0.1", "6.0.5"}).Upper("6.0.9", Single("6.0.0", R"(, "applyPatches": false)"));
  EXPECT_EQ(Both(world, "6.0.0", ""), "Base 6.0.1, Upper 6.0.9");

  World reversed;
  reversed.Base({"6.0.1", "6.0.5"}).Upper("6.0.9", Single("6.0.0"));
  EXPECT_EQ(Both(reversed, "6.0.0", R"(, "applyPatches": false)"), "Base 6.0.1, Upper 6.0.9");
}

TEST(Frameworks, VersionsThatDoNotGoTogetherAreAConflict) {
  World world;
  world.Base({"6.0.1", "7.0.1"}).Upper("6.0.9", Single("7.0.0"));

  const Frameworks found =
      world.Resolved(R"("frameworks": [{"name": "Base", "version": "6.0.0"}, {"name": "Upper", "version": "6.0.0"}])");

  ASSERT_TRUE(found.conflict);
  EXPECT_EQ(found.conflict->name, "Base");
  EXPECT_EQ(found.conflict->lower, "6.0.0");
  EXPECT_EQ(found.conflict->higher, "7.0.0");
}

TEST(Frameworks, AFrameworkWhoseConfigurationIsBrokenStopsTheSearch) {
  World world;
  world.Upper("6.0.9", "");
  tests::WriteFile(world.Folder(kUpper, "6.0.9") / "Upper.runtimeconfig.json", "hello");

  EXPECT_EQ(Story(world.Resolved(R"("framework": {"name": "Upper", "version": "6.0.0"})")), "Upper 6.0.9 broken");
}

TEST(Frameworks, WithoutARootNothingIsLookedFor) {
  RuntimeConfig config{{"app.json", FileState::kPresent}};
  config.frameworks = {{"A", "6.0.0"}, {"B", "6.0.0"}};

  const Frameworks found = ResolveFrameworks(config, "", {});

  ASSERT_EQ(found.reports.size(), 2U);
  EXPECT_FALSE(found.reports.at(1).is_there);
}

}  // namespace
}  // namespace doctor
