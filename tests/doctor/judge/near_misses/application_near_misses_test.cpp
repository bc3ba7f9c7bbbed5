#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

#include "doctor/examine/application_report.h"
#include "doctor/judge/near_misses/near_misses.h"

namespace doctor {
namespace {

const std::string kFramework = "/net/shared/Some.App/6.0.36/Some.App";

// Whose files are all sound.
ApplicationReport Sound() {
  ApplicationReport report;
  report.assembly_file = {"/app.dll", FileState::kPresent};
  report.runtime_config = {"/app.runtimeconfig.json", FileState::kPresent};
  report.dependencies = {"/app.deps.json", FileState::kPresent};
  report.frameworks = {{"Some.App", "6.0.0"}};
  return report;
}

// The one that there is.
Warning Only(const ApplicationReport& report) {
  const Warnings warnings = ApplicationNearMisses(report, true);
  EXPECT_EQ(warnings.size(), 1U);
  return warnings.empty() ? Warning() : warnings.front();
}

TEST(ApplicationNearMisses, OfSoundFilesThereAreNone) {
  EXPECT_TRUE(ApplicationNearMisses(Sound(), true).empty());
}

TEST(ApplicationNearMisses, AFileThatCannotBeUsedIsNamedWithItsFaultAndItsCure) {
  struct Row {
    FileReport file;
    const char* fault;
    std::string cure_of_application, cure_of_framework;
  };
  const std::string product = "install the product again";
  const std::string runtime = "install the .NET runtime 6.0.36 again";
  const std::string chmod = "chmod o+r ";
  const Row rows[] = {
      {{"", FileState::kUnreadable, EACCES}, " cannot be read by this user", chmod, chmod},
      {{"", FileState::kUnreadable, EIO}, " is not a regular file", product, runtime},
      {{"", FileState::kMalformed, 0, 7}, " is not JSON, line 7", product, runtime},
      {{"", FileState::kMalformed}, " does not hold a JSON object", product, runtime},
  };
  const auto expect = [](const ApplicationReport& report, Finding finding, const std::string& path, const Row& row,
                         const std::string& cure) {
    const Warning warning = Only(report);
    EXPECT_EQ(warning.finding, finding);
    EXPECT_EQ(warning.place, path);
    EXPECT_EQ(warning.text, path + row.fault);
    EXPECT_EQ(warning.cure, cure.ends_with(' ') ? cure + path : cure);
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.fault);
    const auto at = [&row](const std::string& path) {
      return FileReport{path, row.file.state, row.file.error, row.file.line};
    };
    ApplicationReport config = Sound();
    config.runtime_config = at("/app.runtimeconfig.json");
    ApplicationReport dependencies = Sound();
    dependencies.dependencies = at("/app.deps.json");
    ApplicationReport ofFramework = Sound();
    ofFramework.framework_config.emplace().file = at(kFramework + ".runtimeconfig.json");
    ApplicationReport listOfFramework = Sound();
    listOfFramework.framework_dependencies.emplace().file = at(kFramework + ".deps.json");

    expect(config, Finding::kMalformedConfig, "/app.runtimeconfig.json", row, row.cure_of_application);
    expect(dependencies, Finding::kMalformedDependencies, "/app.deps.json", row, row.cure_of_application);
    expect(ofFramework, Finding::kMalformedConfig, kFramework + ".runtimeconfig.json", row, row.cure_of_framework);
    expect(listOfFramework, Finding::kMalformedDependencies, kFramework + ".deps.json", row, row.cure_of_framework);
  }
}

TEST(ApplicationNearMisses, EachFaultOfAConfigurationHasItsWords) {
  const std::pair<ConfigFault, const char*> rows[] = {
      {ConfigFault::kNoOptions, " has no object runtimeOptions"},
      {ConfigFault::kNoName, " names a framework without its name"},
      {ConfigFault::kNoVersion, " names What without a version"},
      {ConfigFault::kNamedTwice, " names What twice"},
      {ConfigFault::kUnknownRollForward, " sets rollForward to What, which has no meaning"},
      {ConfigFault::kMixedSettings, " sets rollForward beside rollForwardOnNoCandidateFx or applyPatches"},
      {ConfigFault::kMisshapen, " has a What of another kind than the host takes it for"},
  };
  for (const auto& [fault, words] : rows) {
    ApplicationReport own = Sound();
    own.config_fault = fault;
    own.config_detail = "What";
    ApplicationReport ofFramework = Sound();
    ofFramework.framework_config = {{kFramework + ".runtimeconfig.json", FileState::kPresent}, fault, "What"};

    EXPECT_EQ(Only(own).text, std::string("/app.runtimeconfig.json") + words);
    EXPECT_EQ(Only(own).cure, "install the product again");
    EXPECT_EQ(Only(ofFramework).text, kFramework + ".runtimeconfig.json" + words);
    EXPECT_EQ(Only(ofFramework).cure, "install the .NET runtime 6.0.36 again");
    EXPECT_EQ(Only(own).finding, Finding::kInvalidConfig);
  }
}

TEST(ApplicationNearMisses, AVariableWithoutMeaningIsNamed) {
  ApplicationReport report = Sound();
  report.config_fault = ConfigFault::kUnknownVariable;
  report.config_detail = "Mayor";

  EXPECT_EQ(Only(report).finding, Finding::kRollForwardVariable);
  EXPECT_EQ(Only(report).place, "DOTNET_ROLL_FORWARD");
  EXPECT_EQ(Only(report).text, "DOTNET_ROLL_FORWARD=Mayor has no meaning");
}

TEST(ApplicationNearMisses, FrameworksAreLeftOutWhereThereIsNoVersion) {
  ApplicationReport report = Sound();
  report.framework_config.emplace().file = {kFramework, FileState::kMalformed};

  EXPECT_TRUE(ApplicationNearMisses(report, false).empty());
}

// What the host answers, and what explains it.
TEST(ApplicationNearMisses, OnlyWhatTheHostAnswersToIsExplained) {
  ApplicationReport missing = Sound();
  missing.runtime_config.state = FileState::kMissing;
  ApplicationReport unnamed = Sound();
  unnamed.frameworks.clear();
  ApplicationReport malformed = Sound();
  malformed.runtime_config.state = FileState::kMalformed;
  ApplicationReport list = Sound();
  list.dependencies.state = FileState::kMalformed;
  ApplicationReport conflict = Sound();
  conflict.conflict = {"Some.App", "5.0.0", "6.0.0"};
  ApplicationReport framework = Sound();
  framework.frameworks[0].is_there = false;
  ApplicationReport library = Sound();
  library.host_files = {{kFramework + ".so"}};
  const std::pair<ApplicationReport, std::vector<std::uint32_t>> rows[] = {
      {missing, {0x80008083}},
      {unnamed, {0x80008083}},
      {malformed, {0x80008093}},
      {list, {0x8000808b}},
      {conflict, {0x8000809c}},
      {framework, {0x80008096}},
      {library, {0x80008082, 0x80008083, 0x80008087}},
  };
  for (const auto& [report, answers] : rows) {
    ApplicationReport asked = report;
    SCOPED_TRACE(Only(asked).text);
    EXPECT_TRUE(Only(asked).may_decide) << "nobody has asked the host";
    for (const std::uint32_t status :
         {0x80008082, 0x80008083, 0x80008087, 0x8000808b, 0x80008093, 0x80008096, 0x8000809c}) {
      asked.context = ContextProbe{{ChildEnd::kFinished}, static_cast<std::int32_t>(status)};
      EXPECT_EQ(Only(asked).may_decide, std::ranges::find(answers, status) != answers.end()) << std::hex << status;
    }
    asked.context = ContextProbe{{ChildEnd::kCrashed}};
    EXPECT_FALSE(Only(asked).may_decide) << "the host ended the process";
  }
}

}  // namespace
}  // namespace doctor
