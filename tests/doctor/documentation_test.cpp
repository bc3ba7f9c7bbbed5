// docs/doctor.md against the code.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>

#include "doctor/report/json_report.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

std::string Manual() {
  return tests::ReadFile(fs::path(SOURCE_FOLDER) / "docs/doctor.md");
}

std::set<std::string> Found(const std::string& text, const std::string& pattern) {
  std::set<std::string> found;
  const std::regex regex(pattern);
  for (std::sregex_iterator match(text.begin(), text.end(), regex); match != std::sregex_iterator(); ++match) {
    found.insert((*match)[1]);
  }
  return found;
}

std::string Sources() {
  std::string text;
  for (const auto& entry : fs::recursive_directory_iterator(fs::path(SOURCE_FOLDER) / "doctor")) {
    if (entry.path().extension() == ".cpp") {
      text += tests::ReadFile(entry.path());
    }
  }
  return text;
}

void AddNames(const json& value, std::set<std::string>& names) {
  if (value.is_object()) {
    for (const auto& [name, member] : value.items()) {
      names.insert(name);
      AddNames(member, names);
    }
  }
  for (const json& member : value.is_array() ? value : json::array()) {
    AddNames(member, names);
  }
}

TEST(Manual, NamesEveryWarningAndNoOther) {
  std::set<std::string> codes = Found(Sources(), R"re(Warn\("([a-z-]+)")re");
  codes.merge(Found(Sources(), R"re(\{\{?"([a-z]+(?:-[a-z]+)+)", (?:Printable|"TMP"))re"));
  const std::string manual = Manual();
  const std::string table = manual.substr(manual.find("## Warnings"));

  EXPECT_GT(codes.size(), 20U);
  EXPECT_EQ(Found(table, R"(\n\| `([a-z-]+)` \|)"), codes);
}

TEST(Manual, NamesEveryReasonToRefuseAVersion) {
  const std::string source = tests::ReadFile(fs::path(SOURCE_FOLDER) / "doctor/examine/runtime_report.cpp");
  std::set<std::string> reasons =
      Found(source, R"re((?:return \{|return |reason = |empty\(\) \? |Reason\{)"([a-z0-9-]+)")re");
  reasons.merge(Found(source, R"re(: "([a-z]+-[a-z]+)")re"));

  EXPECT_GT(reasons.size(), 15U);
  for (const std::string& reason : reasons) {
    EXPECT_NE(Manual().find("`" + reason + "`"), std::string::npos) << reason;
  }
}

TEST(Manual, NamesEveryNameOfTheJson) {
  Diagnosis diagnosis;
  diagnosis.warnings.emplace_back();
  diagnosis.settings.entries.emplace_back();
  diagnosis.runtime.emplace().versions.emplace_back();
  diagnosis.environment.variables.emplace_back();
  diagnosis.application.frameworks.emplace_back();
  diagnosis.application.context.emplace();

  std::set<std::string> names;
  AddNames(json::parse(JsonReport(diagnosis)), names);

  EXPECT_GT(names.size(), 50U);
  for (const std::string& name : names) {
    EXPECT_NE(Manual().find("`" + name + "`"), std::string::npos) << name;
  }
}

}  // namespace
}  // namespace doctor
