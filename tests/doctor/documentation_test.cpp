// The tables of docs/doctor.md and the schema beside it against those of the code and the JSON, in both directions.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "doctor/judge/words/names.h"
#include "doctor/judge/words/version_reasons.h"
#include "doctor/report/json_report.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using TableRow = std::vector<std::string>;
using TableRows = std::set<TableRow>;

std::string Trimmed(const std::string& cell) {
  const auto first = cell.find_first_not_of(' ');
  return first == std::string::npos ? "" : cell.substr(first, cell.find_last_not_of(' ') - first + 1);
}

TableRow Cells(const std::string& line) {
  TableRow cells;
  std::istringstream rest(line.substr(1));
  for (std::string cell; std::getline(rest, cell, '|');) {
    cells.push_back(Trimmed(cell));
  }
  return cells;
}

// The rows of the first table behind a heading that begins so, without its two lines of titles.
TableRows Documented(const std::string& heading) {
  const std::string manual = tests::ReadFile(fs::path(SOURCE_FOLDER) / "docs/doctor.md");
  const auto at = manual.find("\n" + heading);
  EXPECT_NE(at, std::string::npos) << heading;
  std::istringstream lines(at != std::string::npos ? manual.substr(at + 1) : "");
  std::string line;
  while (std::getline(lines, line) && !line.starts_with("|---")) {
  }
  TableRows rows;
  while (std::getline(lines, line) && line.starts_with("|")) {
    EXPECT_TRUE(rows.insert(Cells(line)).second) << line;
  }
  return rows;
}

std::string Marked(std::string_view code) {
  return "`" + std::string(code) + "`";
}

template <typename Table>
TableRows NamesOf(const Table& table) {
  TableRows rows;
  for (const auto& row : table) {
    rows.insert({Marked(row.code), std::string(row.meaning)});
  }
  return rows;
}

TEST(Manual, HoldsEveryNameWithItsMeaningAndNoOther) {
  EXPECT_EQ(Documented("### `outcome`"), NamesOf(kOutcomes));
  EXPECT_EQ(Documented("### `use`"), NamesOf(kLineUses));
  EXPECT_EQ(Documented("### `folder_state`"), NamesOf(kFolderStates));
  EXPECT_EQ(Documented("### `standing`"), NamesOf(kStandings));
  EXPECT_EQ(Documented("### `reason`"), NamesOf(kVersionReasons));
  EXPECT_EQ(Documented("### `other_roots[].state`"), NamesOf(kRootStates));
  EXPECT_EQ(Documented("### `right`"), NamesOf(kChangeRights));
  EXPECT_EQ(Documented("### `state`"), NamesOf(kFileStates));
  EXPECT_EQ(Documented("### `roll_forward`"), NamesOf(kRollForwards));
  EXPECT_EQ(Documented("### `need`"), NamesOf(kNeeds));
  EXPECT_EQ(Documented("### `end`"), NamesOf(kChildEnds));
}

// A bar would end the cell.
std::string InTable(std::string_view text) {
  std::string cell;
  for (const char letter : text) {
    cell += letter == '|' ? "&#124;" : std::string(1, letter);
  }
  return cell;
}

TEST(Manual, HoldsEveryFindingWithItsMeaningAndCureAndNoOther) {
  TableRows warnings;
  for (const FindingText& row : kFindings) {
    warnings.insert({Marked(row.code), InTable(row.cause), InTable(row.meaning), InTable(row.cure)});
  }

  EXPECT_EQ(Documented("## Findings"), warnings);
}

void AddMembers(const json& value, const std::string& path, std::set<std::string>& members) {
  if (value.is_object()) {
    for (const auto& [name, member] : value.items()) {
      const std::string inner = path.empty() ? name : path + "." + name;
      members.insert(Marked(inner));
      AddMembers(member, inner, members);
    }
  }
  for (const json& element : value.is_array() ? value : json::array()) {
    AddMembers(element, path + "[]", members);
  }
}

// Of a report that leaves nothing out.
std::set<std::string> MembersOfTheJson() {
  Diagnosis diagnosis;
  diagnosis.warnings.emplace_back();
  diagnosis.settings.entries.emplace_back();
  diagnosis.runtime.emplace().versions.emplace_back();
  diagnosis.other_roots.emplace_back();
  diagnosis.environment.variables.emplace_back();
  diagnosis.environment.obeyed.emplace_back();
  diagnosis.open_paths.emplace_back();
  diagnosis.launcher.emplace();
  diagnosis.application.frameworks.emplace_back();
  diagnosis.application.context.emplace();
  diagnosis.start.emplace().broken.emplace_back();
  diagnosis.settings.path = "\xff";
  Head head;
  head.machine.limits.emplace_back();
  std::set<std::string> members;
  AddMembers(json::parse(JsonReport(diagnosis, head)), "", members);
  return members;
}

TEST(Manual, HoldsEveryMemberOfTheJsonAndNoOther) {
  std::set<std::string> documented;
  for (const TableRow& row : Documented("### Members")) {
    documented.insert(row.front());
    EXPECT_EQ(row.size(), 2U) << row.front();
  }

  EXPECT_EQ(documented, MembersOfTheJson());
}

template <typename Table>
void ExpectDistinctCodes(const Table& table) {
  std::set<std::string_view> codes;
  for (const auto& row : table) {
    EXPECT_TRUE(codes.insert(row.code).second) << row.code;
  }
}

TEST(Manual, TheCodesOfOneTableAreDistinct) {
  ExpectDistinctCodes(kFindings);
  ExpectDistinctCodes(kVersionReasons);
  ExpectDistinctCodes(kOutcomes);
}

using Codes = std::set<std::string>;

json Schema() {
  return json::parse(tests::ReadFile(fs::path(SOURCE_FOLDER) / "docs/grellin_doctor.schema.json"));
}

// What a part of the schema permits, each member by its path, with its codes where it has such.
void AddPermitted(const json& schema, const json& part, const std::string& path,
                  std::map<std::string, Codes>& members) {
  if (!path.empty() && !path.ends_with("[]")) {
    members[Marked(path)].merge(part.value("enum", Codes()));
  }
  const json properties = part.value("properties", json::object());
  for (const auto& [name, member] : properties.items()) {
    AddPermitted(schema, member, path.empty() ? name : path + "." + name, members);
  }
  for (const json& choice : part.value("anyOf", json::array())) {
    AddPermitted(schema, choice, path, members);
  }
  if (part.contains("items")) {
    AddPermitted(schema, part["items"], path + "[]", members);
  }
  if (part.contains("$ref")) {
    AddPermitted(schema, schema.at(json::json_pointer(part["$ref"].get<std::string>().substr(1))), path, members);
  }
}

std::map<std::string, Codes> Permitted() {
  std::map<std::string, Codes> members;
  const json schema = Schema();
  AddPermitted(schema, schema, "", members);
  return members;
}

template <typename Table>
Codes CodesOf(const Table& table) {
  Codes codes;
  for (const auto& row : table) {
    codes.emplace(row.code);
  }
  return codes;
}

TEST(Schema, HasTheNumberThatReportsHave) {
  EXPECT_EQ(Schema().at("/properties/schema/const"_json_pointer), kJsonSchema);
}

TEST(Schema, PermitsEveryMemberOfTheJsonAndNoOther) {
  std::set<std::string> permitted;
  for (const auto& [member, codes] : Permitted()) {
    permitted.insert(member);
  }

  EXPECT_EQ(permitted, MembersOfTheJson());
}

TEST(Schema, PermitsEveryCodeOfTheTablesAndNoOther) {
  const std::map<std::string, Codes> expected = {
      {"`verdict.outcome`", CodesOf(kOutcomes)},
      {"`verdict.code`", CodesOf(kFindings)},
      {"`warnings[].code`", CodesOf(kFindings)},
      {"`settings.entries[].use`", CodesOf(kLineUses)},
      {"`runtime.folder_state`", CodesOf(kFolderStates)},
      {"`runtime.versions[].standing`", CodesOf(kStandings)},
      {"`runtime.versions[].reason`", CodesOf(kVersionReasons)},
      {"`environment.variables[].action`", {"set", "remove"}},
      {"`other_roots[].state`", CodesOf(kRootStates)},
      {"`open_paths[].right`", CodesOf(kChangeRights)},
      {"`application.assembly.state`", CodesOf(kFileStates)},
      {"`application.runtime_config.state`", CodesOf(kFileStates)},
      {"`application.dependencies.state`", CodesOf(kFileStates)},
      {"`application.frameworks[].roll_forward`", CodesOf(kRollForwards)},
      {"`application.context.end`", CodesOf(kChildEnds)},
      {"`start.end`", CodesOf(kChildEnds)},
      {"`start.broken_files[].need`", CodesOf(kNeeds)},
  };

  std::map<std::string, Codes> permitted = Permitted();
  std::erase_if(permitted, [](const auto& member) { return member.second.empty(); });

  EXPECT_EQ(permitted, expected);
}

}  // namespace
}  // namespace doctor
