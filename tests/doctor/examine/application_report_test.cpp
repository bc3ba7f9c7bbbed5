#include "doctor/examine/application_report.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "doctor/judge/near_misses/near_misses.h"
#include "doctor/judge/words/names.h"
#include "tests/doctor/installation.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

using tests::Installation;

const std::string kStem(tests::kApplication);

ApplicationReport Examine() {
  return ExamineApplication(u"/opt/morvath/dotnet", {});
}

// "present missing malformed" of assembly, runtimeconfig.json and deps.json
std::string States(const ApplicationReport& report) {
  std::string states;
  for (const auto* file : {&report.assembly_file, &report.runtime_config, &report.dependencies}) {
    states.append(states.empty() ? "" : " ").append(RowOf(kFileStates, file->state).code);
  }
  return states;
}

// "name version there, name version"
std::string Frameworks(const ApplicationReport& report) {
  std::string story;
  for (const FrameworkReport& framework : report.frameworks) {
    story += (story.empty() ? "" : ", ") + framework.name + " " + framework.version +
             (!framework.is_there   ? " unknown"
              : *framework.is_there ? " there"
                                    : "");
  }
  return story;
}

TEST(ApplicationReport, TheThreeFilesAreLookedAt) {
  Installation installation;
  installation.Application();

  const ApplicationReport report = Examine();

  EXPECT_EQ(report.assembly, u"/opt/morvath/quor/lib64/grellin_utils.dll");
  EXPECT_EQ(report.assembly_file.path, kStem + ".dll");
  EXPECT_EQ(report.runtime_config.path, kStem + ".runtimeconfig.json");
  EXPECT_EQ(report.dependencies.path, kStem + ".deps.json");
  EXPECT_EQ(States(report), "present present present");
  EXPECT_FALSE(report.context);
}

TEST(ApplicationReport, WhatIsMissingOrUnusableIsDistinguished) {
  struct Row {
    const char* name;
    const char* states;
    void (*lay)(Installation& installation);
  };
  const Row rows[] = {
      {"nothing", "missing missing missing",
       [](Installation& installation) { installation.Remove("/opt/morvath/quor"); }},
      {"no folder", "missing missing missing",
       [](Installation& installation) {
         installation.Remove("/opt/morvath/quor");
         tests::WriteFile("/opt/morvath/quor", "");
       }},
      {"folders", "unreadable unreadable unreadable",
       [](Installation& installation) {
         for (const char* end : {".dll", ".runtimeconfig.json", ".deps.json"}) {
           installation.Remove(kStem + end);
           std::filesystem::create_directory(kStem + end);
         }
       }},
      {"a pipe, which nobody writes to", "present unreadable present",
       [](Installation& installation) {
         installation.Remove(kStem + ".runtimeconfig.json");
         ::mkfifo((kStem + ".runtimeconfig.json").c_str(), 0644);
       }},
      {"links in a circle", "present unreadable present",
       [](Installation& installation) {
         installation.Remove(kStem + ".runtimeconfig.json");
         std::filesystem::create_symlink(kStem + ".runtimeconfig.json", kStem + ".runtimeconfig.json");
       }},
      {"text that is not JSON", "present malformed malformed",
       [](Installation&) {
         tests::WriteFile(kStem + ".runtimeconfig.json", "{\"runtimeOptions\":");
         tests::WriteFile(kStem + ".deps.json", "");
       }},
      {"no object", "present malformed malformed",
       [](Installation&) {
         tests::WriteFile(kStem + ".runtimeconfig.json", "[1]");
         tests::WriteFile(kStem + ".deps.json", "null");
       }},
      {"deeper than any stack", "present malformed malformed",
       [](Installation&) {
         tests::WriteFile(kStem + ".runtimeconfig.json", std::string(1'000'000, '['));
         tests::WriteFile(kStem + ".deps.json", std::string(500'000, '[') + std::string(500'000, ']'));
       }},
      {"comments", "present present present",
       [](Installation&) {
         tests::WriteFile(kStem + ".runtimeconfig.json", "// words\n{ /* more */ }");
         tests::WriteFile(kStem + ".deps.json", "\xEF\xBB\xBF{}");
       }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    Installation installation;
    installation.Application();
    row.lay(installation);

    EXPECT_EQ(States(Examine()), row.states);
  }
}

TEST(ApplicationReport, FrameworksAreReadWhereverTheyAreNamed) {
  struct Row {
    const char* config;
    const char* frameworks;
  };
  const Row rows[] = {
      {R"({})", ""},
      {R"({"runtimeOptions": {}})", ""},
      {R"({"runtimeOptions": 5})", ""},
      {R"({"runtimeOptions": {"framework": {"name": "A", "version": "6.0.0"}}})", "A 6.0.0 there"},
      {R"({"runtimeOptions": {"framework": {"name": "A", "version": "6.0.99"}}})", "A 6.0.99 there"},
      {R"({"runtimeOptions": {"framework": {"name": "A", "version": "5.0.0"}}})", "A 5.0.0"},
      {R"({"runtimeOptions": {"framework": {"name": "A", "version": "7.0.0"}}})", "A 7.0.0"},
      {R"({"runtimeOptions": {"framework": {"name": "C", "version": "6.0.0"}}})", "C 6.0.0"},
      {R"({"runtimeOptions": {"frameworks": [{"name": "A", "version": "6.0.0"}, {"name": "B", "version": "6.0.0"}]}})",
       "A 6.0.0 there, B 6.0.0"},
      {R"({"runtimeOptions": {"rollForward": "Major", "framework": {"name": "A", "version": "5.0.0"}}})",
       "A 5.0.0 there"},
      {R"({"runtimeOptions": {"rollForward": "LatestMajor", "framework": {"name": "A", "version": "5.0.0"}}})",
       "A 5.0.0 there"},
      {R"({"runtimeOptions": {"rollForward": "LatestMajor", "framework": {"name": "A", "version": "7.0.0"}}})",
       "A 7.0.0"},
      {R"({"runtimeOptions": {"rollForward": "LatestMinor", "framework": {"name": "A", "version": "5.0.0"}}})",
       "A 5.0.0"},
      {R"({"runtimeOptions": {"rollForward": 1, "framework": {"name": 1, "version": 2}}})", ""},
      {R"({"runtimeOptions": {"framework": "A", "frameworks": {"name": "A"}}})", ""},
      {R"({"runtimeOptions": {"frameworks": ["A", null, {"version": "6.0.0"}, {"name": "A"}]}})", "A "},
  };
  Installation installation;
  installation.Application();
  std::filesystem::create_directories("/opt/morvath/dotnet/shared/A/6.0.36");
  std::filesystem::create_directories("/opt/morvath/dotnet/shared/B/7.0.1");
  for (const Row& row : rows) {
    SCOPED_TRACE(row.config);
    tests::WriteFile(kStem + ".runtimeconfig.json", row.config);

    EXPECT_EQ(Frameworks(Examine()), row.frameworks);
  }
}

TEST(ApplicationReport, WithoutARootNobodyKnowsAboutFrameworks) {
  Installation installation;
  installation.Healthy();

  const ApplicationReport report = ExamineApplication({}, {});

  EXPECT_EQ(Frameworks(report), "Microsoft.NETCore.App 6.0.0 unknown");
  EXPECT_TRUE(ApplicationNearMisses(report, true).empty());
}

TEST(ApplicationReport, TheContextIsAskedForWhenThereIsSomeoneToAsk) {
  const ApplicationReport report = ExamineApplication(u"/r", [] { return ContextProbe{{ChildEnd::kFinished}, 5}; });

  ASSERT_TRUE(report.context);
  EXPECT_EQ(report.context->result, 5);
}

TEST(ApplicationNearMisses, AMissingAssemblyAndAMissingFrameworkAreNamed) {
  Installation installation;
  installation.Healthy();
  EXPECT_TRUE(ApplicationNearMisses(Examine(), true).empty());

  installation.Remove("/opt/morvath/dotnet/shared");
  const Warnings framework = ApplicationNearMisses(Examine(), true);
  installation.Framework("6.0.36").Remove(kStem + ".dll");
  const Warnings assembly = ApplicationNearMisses(Examine(), true);

  ASSERT_EQ(framework.size(), 1U);
  EXPECT_EQ(framework[0].finding, Finding::kMissingFramework);
  EXPECT_EQ(framework[0].place, kStem + ".runtimeconfig.json");
  EXPECT_NE(framework[0].text.find("Microsoft.NETCore.App 6.0.0"), std::string::npos);
  ASSERT_EQ(assembly.size(), 1U);
  EXPECT_EQ(assembly[0].finding, Finding::kMissingAssembly);
  EXPECT_EQ(assembly[0].place, kStem + ".dll");
}

}  // namespace
}  // namespace doctor
