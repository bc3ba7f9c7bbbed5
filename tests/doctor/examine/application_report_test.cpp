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

TEST(ApplicationReport, FrameworksAreLookedForUnderTheRoot) {
  Installation installation;
  installation.Healthy().Framework("6.0.9").Framework("7.0.1");

  const ApplicationReport report = Examine();

  EXPECT_EQ(Frameworks(report), "Microsoft.NETCore.App 6.0.0 there");
  EXPECT_EQ(report.frameworks.at(0).taken, "6.0.36");
  EXPECT_EQ(report.frameworks.at(0).named_by, kStem + ".runtimeconfig.json");
  EXPECT_TRUE(report.host_files.empty());
}

TEST(ApplicationReport, TheLibraryThatPreparesTheApplicationIsLookedAt) {
  Installation installation;
  installation.Healthy().Remove("/opt/morvath/dotnet/shared/Microsoft.NETCore.App/6.0.36/libhostpolicy.so");

  const ApplicationReport report = Examine();

  ASSERT_EQ(report.host_files.size(), 1U);
  EXPECT_EQ(report.host_files[0].path, "/opt/morvath/dotnet/shared/Microsoft.NETCore.App/6.0.36/libhostpolicy.so");
  EXPECT_EQ(report.host_files[0].detail, "missing");
}

TEST(ApplicationReport, AFaultOfTheConfigurationIsKept) {
  Installation installation;
  installation.Healthy();
  tests::WriteFile(kStem + ".runtimeconfig.json", R"({"runtimeOptions": {"framework": {"name": "A"}}})");

  const ApplicationReport report = Examine();

  EXPECT_EQ(report.config_fault, ConfigFault::kNoVersion);
  EXPECT_EQ(report.config_detail, "A");
  EXPECT_TRUE(report.frameworks.empty());
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

// What the host answers when it was asked.
ApplicationReport Answered(ApplicationReport report, std::uint32_t status) {
  report.context = ContextProbe{{ChildEnd::kFinished}, static_cast<std::int32_t>(status)};
  report.context->has_handle = status == 0;
  return report;
}

TEST(ApplicationNearMisses, AMissingAssemblyAndAMissingFrameworkAreNamed) {
  Installation installation;
  installation.Healthy();
  EXPECT_TRUE(ApplicationNearMisses(Examine(), true).empty());

  installation.Remove("/opt/morvath/dotnet/shared");
  const Warnings framework = ApplicationNearMisses(Answered(Examine(), 0x80008096), true);
  installation.Framework("6.0.36").Remove(kStem + ".dll");
  const Warnings assembly = ApplicationNearMisses(Examine(), true);

  ASSERT_EQ(framework.size(), 1U);
  EXPECT_EQ(framework[0].finding, Finding::kMissingFramework);
  EXPECT_EQ(framework[0].place, kStem + ".runtimeconfig.json");
  EXPECT_EQ(framework[0].text, "Microsoft.NETCore.App 6.0.0 is needed, and there is none under /opt/morvath/dotnet");
  EXPECT_EQ(framework[0].meaning, "(hostfxr: 0x80008096 FrameworkMissingFailure)");
  EXPECT_EQ(framework[0].cure, "install the .NET runtime 6.0.0 or a newer 6.0");
  EXPECT_TRUE(framework[0].may_decide);
  ASSERT_EQ(assembly.size(), 1U);
  EXPECT_EQ(assembly[0].finding, Finding::kMissingAssembly);
  EXPECT_EQ(assembly[0].place, kStem + ".dll");
}

TEST(ApplicationNearMisses, AMissingFrameworkIsSaidBesideWhatIsThere) {
  struct Row {
    const char* framework;
    const char* text;
    const char* cure;
  };
  const Row rows[] = {
      {R"("name": "Microsoft.NETCore.App", "version": "6.0.50")",
       "Microsoft.NETCore.App 6.0.50 is needed, and 6.0.36 is the newest under /opt/morvath/dotnet",
       "install the .NET runtime 6.0.50 or a newer 6.0"},
      {R"("name": "Microsoft.NETCore.App", "version": "5.0.0")",
       "Microsoft.NETCore.App 5.0.0 is needed; under /opt/morvath/dotnet there are 6.0.9 and 6.0.36, and roll-forward "
       "is Minor",
       "install the .NET runtime 5.0.0 or a newer 5.0"},
      {R"("name": "Microsoft.NETCore.App", "version": "6.0.9x")",
       "Microsoft.NETCore.App 6.0.9x is needed, and '6.0.9x' is not a version", "install the .NET runtime 6.0.9x"},
      {R"("name": "Microsoft.AspNetCore.App", "version": "6.0.0", "rollForward": "Disable")",
       "Microsoft.AspNetCore.App 6.0.0 is needed, and there is none under /opt/morvath/dotnet",
       "install the ASP.NET Core runtime 6.0.0"},
  };
  Installation installation;
  installation.Healthy().Framework("6.0.9");
  for (const Row& row : rows) {
    SCOPED_TRACE(row.framework);
    tests::WriteFile(kStem + ".runtimeconfig.json",
                     R"({"runtimeOptions": {"framework": {)" + std::string(row.framework) + "}}}");

    const Warnings warnings = ApplicationNearMisses(Examine(), true);

    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_EQ(warnings[0].text, row.text);
    EXPECT_EQ(warnings[0].cure, row.cure);
  }
}

TEST(ApplicationNearMisses, OnlyWhatFitsTheHostsAnswerExplainsIt) {
  Installation installation;
  installation.Healthy().Remove("/opt/morvath/dotnet/shared");

  const Warnings other = ApplicationNearMisses(Answered(Examine(), 0x80008087), true);

  ASSERT_EQ(other.size(), 1U);
  EXPECT_FALSE(other[0].may_decide);
  EXPECT_TRUE(ApplicationNearMisses(Answered(Examine(), 0), true).empty()) << "the host accepts the application";
  EXPECT_TRUE(ApplicationNearMisses(Examine(), false).empty()) << "the root holds no runtime at all";
}

TEST(ApplicationNearMisses, EveryConfigurationThatTheHostCannotUseIsExplained) {
  struct Row {
    Finding finding;
    std::uint32_t status;
    const char* text;
    void (*lay)(Installation& installation);
  };
  const Row rows[] = {
      {Finding::kMissingConfig, 0x80008083, ".runtimeconfig.json is missing",
       [](Installation& installation) { installation.Remove(kStem + ".runtimeconfig.json"); }},
      {Finding::kMalformedConfig, 0x80008093, ".runtimeconfig.json is not JSON, line 2",
       [](Installation&) { tests::WriteFile(kStem + ".runtimeconfig.json", "{\n,"); }},
      {Finding::kInvalidConfig, 0x80008093, ".runtimeconfig.json has no object runtimeOptions",
       [](Installation&) { tests::WriteFile(kStem + ".runtimeconfig.json", "{}"); }},
      {Finding::kNoFrameworkNamed, 0x80008083, ".runtimeconfig.json names no framework",
       [](Installation&) { tests::WriteFile(kStem + ".runtimeconfig.json", R"({"runtimeOptions": {}})"); }},
      {Finding::kMalformedConfig, 0x80008093, "Microsoft.NETCore.App.runtimeconfig.json is not JSON, line 1",
       [](Installation&) {
         tests::WriteFile(
             "/opt/morvath/dotnet/shared/Microsoft.NETCore.App/6.0.36/Microsoft.NETCore.App.runtimeconfig.json", "x");
       }},
      {Finding::kMalformedConfig, 0x80008093, ".runtimeconfig.json is not a regular file",
       [](Installation& installation) {
         installation.Remove(kStem + ".runtimeconfig.json");
         std::filesystem::create_directory(kStem + ".runtimeconfig.json");
       }},
      {Finding::kMalformedDependencies, 0x8000808b, ".deps.json is not JSON, line 3",
       [](Installation&) { tests::WriteFile(kStem + ".deps.json", "{\n\"a\": 1,\n]"); }},
      {Finding::kMalformedDependencies, 0x8000808b, "Microsoft.NETCore.App.deps.json does not hold a JSON object",
       [](Installation&) {
         tests::WriteFile("/opt/morvath/dotnet/shared/Microsoft.NETCore.App/6.0.36/Microsoft.NETCore.App.deps.json",
                          "[]");
       }},
      {Finding::kHostFileBroken, 0x80008087, "libcoreclr.so is missing",
       [](Installation& installation) {
         installation.Remove("/opt/morvath/dotnet/shared/Microsoft.NETCore.App/6.0.36/libcoreclr.so");
       }},
      {Finding::kHostFileBroken, 0x80008083, "libhostpolicy.so is missing",
       [](Installation& installation) {
         installation.Remove("/opt/morvath/dotnet/shared/Microsoft.NETCore.App/6.0.36/libhostpolicy.so");
       }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    Installation installation;
    installation.Healthy();
    row.lay(installation);

    const Warnings warnings = ApplicationNearMisses(Answered(Examine(), row.status), true);

    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_EQ(warnings[0].finding, row.finding);
    EXPECT_TRUE(warnings[0].text.ends_with(row.text)) << warnings[0].text;
    EXPECT_TRUE(warnings[0].may_decide);
    EXPECT_NE(warnings[0].cure, "");
  }
}

TEST(ApplicationNearMisses, AShapeThatTheHostDoesNotLookAtExplainsThatItEndsTheProcess) {
  struct Row {
    const char* file;
    const char* text;
    const char* words;
  };
  const Row rows[] = {
      {".runtimeconfig.json", R"({"runtimeOptions": {"frameworks": 6}})", "has a frameworks of another kind"},
      {".runtimeconfig.json", R"({"runtimeOptions": {"rollForward": 2}})", "has a rollForward of another kind"},
      {".deps.json", "{}", "has no runtimeTarget"},
      {".deps.json", R"({"runtimeTarget": "x", "libraries": {"a/1": {"type": "project"}}})", "has no sha512 of a/1"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    Installation installation;
    installation.Healthy();
    tests::WriteFile(kStem + row.file, row.text);
    ApplicationReport report = Examine();
    report.context = ContextProbe{{ChildEnd::kCrashed}};

    const Warnings warnings = ApplicationNearMisses(report, true);

    ASSERT_FALSE(warnings.empty());
    EXPECT_NE(warnings[0].text.find(row.words), std::string::npos) << warnings[0].text;
    EXPECT_TRUE(warnings[0].may_decide);
  }
}

}  // namespace
}  // namespace doctor
