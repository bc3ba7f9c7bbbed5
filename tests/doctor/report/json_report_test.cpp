#include "doctor/report/json_report.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <nlohmann/json.hpp>

#include "doctor/version.h"
#include "foundation/char_converters.h"

namespace doctor {
namespace {

using nlohmann::json;

Diagnosis Empty() {
  Diagnosis diagnosis;
  diagnosis.verdict = {Outcome::kRuns};
  diagnosis.application.assembly_file = {"/app.dll", FileState::kPresent};
  diagnosis.application.runtime_config = {"/app.runtimeconfig.json", FileState::kMissing, ENOENT};
  diagnosis.application.dependencies = {"/app.deps.json", FileState::kMalformed};
  return diagnosis;
}

json Parsed(const Diagnosis& diagnosis) {
  return json::parse(JsonReport(diagnosis));
}

TEST(JsonReport, IsOneObjectWithASchemaAndANewline) {
  const std::string text = JsonReport(Empty());
  const json report = json::parse(text);

  EXPECT_EQ(text.back(), '\n');
  EXPECT_EQ(report["schema"], 2);
  EXPECT_EQ(report["doctor"], (json{{"name", "grellin_doctor"}, {"version", kVersion}}));
  EXPECT_EQ(report["verdict"]["outcome"], "runs");
  EXPECT_EQ(report["verdict"]["line"], VerdictLine(Empty().verdict));
  EXPECT_EQ(report["verdict"]["code"], nullptr);
  EXPECT_EQ(report["verdict"]["exit_status"], 0);
  EXPECT_EQ(report["verdict"]["probed"], true);
  EXPECT_EQ(report["warnings"], json::array());
  EXPECT_EQ(report["runtime"], nullptr);
  EXPECT_EQ(report["application"]["context"], nullptr);
  EXPECT_EQ(report["application"]["assembly"], (json{{"path", "/app.dll"}, {"state", "present"}, {"detail", nullptr}}));
  EXPECT_EQ(report["application"]["dependencies"]["state"], "malformed");
}

TEST(JsonReport, TheVerdictHasTheCodeOfItsCauseAndWarningsSayWhetherTheyDecide) {
  Diagnosis diagnosis = Empty();
  diagnosis.verdict.outcome = Outcome::kStatus255;
  diagnosis.warnings = {{Finding::kTmpEmpty, "TMP", "odd", "", "cure"},
                        {Finding::kQuotedValue, "line 1", "in quotes", "So.", "cure", true, true}};
  diagnosis.verdict.cause = diagnosis.warnings[1];

  const json report = Parsed(diagnosis);

  EXPECT_EQ(report["verdict"]["code"], "quoted-value");
  EXPECT_EQ(report["verdict"]["reason"], "in quotes");
  EXPECT_EQ(report["verdict"]["meaning"], "So.");
  EXPECT_EQ(report["warnings"][0]["decides"], false);
  EXPECT_EQ(report["warnings"][1]["decides"], true);
}

TEST(JsonReport, NamesStayInTheirOrder) {
  const auto report = nlohmann::ordered_json::parse(JsonReport(Empty()));
  std::vector<std::string> names;
  for (const auto& [name, value] : report.items()) {
    names.push_back(name);
  }

  EXPECT_EQ(names, (std::vector<std::string>{"schema", "doctor", "asked", "machine", "verdict", "warnings", "settings",
                                             "runtime", "other_roots", "environment", "open_paths", "launcher",
                                             "application", "start", "inexact"}));
}

TEST(JsonReport, TheVerdictsNumbersAreThereWhereTheyMeanSomething) {
  struct Row {
    Outcome outcome;
    int code;
    json exit_status, signal;
  };
  const Row rows[] = {{Outcome::kRuns, 0, 0, nullptr},           {Outcome::kStatus255, 255, 255, nullptr},
                      {Outcome::kExits, 17, 17, nullptr},        {Outcome::kDies, SIGBUS, nullptr, "SIGBUS"},
                      {Outcome::kAborts, 0, nullptr, nullptr},   {Outcome::kHangs, 0, nullptr, nullptr},
                      {Outcome::kNotKnown, 0, nullptr, nullptr}, {Outcome::kNotStarted, 0, 0, nullptr},
                      {Outcome::kNotBegun, 127, 127, nullptr}};
  for (const Row& row : rows) {
    Diagnosis diagnosis = Empty();
    diagnosis.verdict.outcome = row.outcome;
    diagnosis.verdict.code = row.code;

    const json report = Parsed(diagnosis);

    EXPECT_EQ(report["verdict"]["exit_status"], row.exit_status) << RowOf(kOutcomes, row.outcome).code;
    EXPECT_EQ(report["verdict"]["signal"], row.signal) << RowOf(kOutcomes, row.outcome).code;
  }
}

TEST(JsonReport, EveryUseStandingAndStateHasItsName) {
  Diagnosis diagnosis = Empty();
  diagnosis.settings.entries = {{1, "a", "b", LineUse::kUsed},
                                {2, "a", "b", LineUse::kUnused},
                                {3, "a", "b", LineUse::kReplaced, 9},
                                {4, "", "b", LineUse::kSkipped},
                                {5, "a", "b", LineUse::kMalformed}};
  RuntimeReport runtime;
  for (const Standing standing :
       {Standing::kChosen, Standing::kNotLoaded, Standing::kRefused, Standing::kFatal, Standing::kNotKnown}) {
    runtime.versions.emplace_back().standing = standing;
  }
  diagnosis.runtime = runtime;

  const json report = Parsed(diagnosis);

  std::vector<std::string> uses;
  for (const json& entry : report["settings"]["entries"]) {
    uses.push_back(entry["use"]);
    EXPECT_EQ(entry["replaced_by"], entry["line"] == 3 ? json(9) : json());
  }
  EXPECT_EQ(uses, (std::vector<std::string>{"used", "unused", "replaced", "skipped", "malformed"}));
  std::vector<std::string> standings;
  for (const json& version : report["runtime"]["versions"]) {
    standings.push_back(version["standing"]);
  }
  EXPECT_EQ(standings, (std::vector<std::string>{"chosen", "not-loaded", "refused", "fatal", "not-known"}));
}

TEST(JsonReport, EveryFolderStateHasItsName) {
  using State = netloader::FxrFolderState;
  const std::pair<State, const char*> rows[] = {{State::kWalked, "walked"},
                                                {State::kNoStatus, "no-status"},
                                                {State::kIsLink, "link"},
                                                {State::kNotAFolder, "not-a-folder"},
                                                {State::kUnreadable, "unreadable"}};
  for (const auto& [state, name] : rows) {
    Diagnosis diagnosis = Empty();
    diagnosis.runtime.emplace().discovery.state = state;

    EXPECT_EQ(Parsed(diagnosis)["runtime"]["folder_state"], name);
  }
}

TEST(JsonReport, AContextsEndHasItsNameAndItsStatusOnlyWhenItFinished) {
  const std::pair<ChildEnd, const char*> rows[] = {
      {ChildEnd::kFinished, "finished"},     {ChildEnd::kThrew, "threw"},     {ChildEnd::kThrewUnknown, "threw"},
      {ChildEnd::kExited, "exited"},         {ChildEnd::kCrashed, "crashed"}, {ChildEnd::kTimedOut, "timed-out"},
      {ChildEnd::kNotStarted, "not-started"}};
  for (const auto& [end, name] : rows) {
    SCOPED_TRACE(name);
    Diagnosis diagnosis = Empty();
    ContextProbe& context = diagnosis.application.context.emplace();
    context.child.end = end;
    context.child.output = "out";
    context.result = static_cast<std::int32_t>(0x80008096);
    context.error = 2;
    context.host_text = "words";

    const json report = Parsed(diagnosis)["application"]["context"];

    const bool finished = end == ChildEnd::kFinished;
    EXPECT_EQ(report["end"], name);
    EXPECT_EQ(report["output"], "out");
    EXPECT_EQ(report["created"], false);
    EXPECT_EQ(report["status"], finished ? json("0x80008096") : json());
    EXPECT_EQ(report["status_name"], finished ? json("FrameworkMissingFailure") : json());
    EXPECT_EQ(report["errno"], finished ? json(2) : json());
    EXPECT_EQ(report["host_text"], "words");
  }
}

TEST(JsonReport, AStartHasItsResultOnlyWhereItWasTried) {
  struct Row {
    const char* name;
    StartProbe probe;
    bool tried, started;
    json result;
  };
  const Row rows[] = {
      {"started", {{ChildEnd::kFinished}, true}, true, true, "0x00000000"},
      {"failed", {{ChildEnd::kFinished}, true, 7}, true, false, "0x00000007"},
      {"not offered", {{ChildEnd::kFinished}}, false, false, nullptr},
      {"died", {{ChildEnd::kCrashed, SIGSEGV}}, true, false, nullptr},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    Diagnosis diagnosis = Empty();
    diagnosis.start = StartReport{row.probe, {{"/a.dll", Need::kMain, true, false, false, "missing"}}};
    diagnosis.start->probe.child.output = "out";
    diagnosis.start->probe.host_text = "words";

    const json start = Parsed(diagnosis)["start"];

    EXPECT_EQ(start["tried"], row.tried);
    EXPECT_EQ(start["started"], row.started);
    EXPECT_EQ(start["result"], row.result);
    EXPECT_EQ(start["output"], "out");
    EXPECT_EQ(start["host_text"], "words");
    EXPECT_EQ(start["icu"], nullptr);
    EXPECT_EQ(start["broken_files"], json::parse(R"([{"path": "/a.dll", "detail": "missing", "need": "main"}])"));
  }
}

TEST(JsonReport, IsUtf8WhateverTheBytes) {
  const std::string bytes = "a\xff\"\\\n\x01\xed\xa0\x80z";
  Diagnosis diagnosis = Empty();
  diagnosis.verdict.cause = {{}, bytes, bytes, bytes, bytes};
  diagnosis.verdict.message = bytes;
  diagnosis.warnings = {{Finding::kBlankAtEnd, bytes, bytes, bytes, bytes}};
  diagnosis.settings.path = diagnosis.settings.reason = diagnosis.settings.failure = bytes;
  diagnosis.settings.root = diagnosis.settings.log_folder = tov::WideString(1, char16_t{0xDC00});
  diagnosis.settings.entries = {{1, bytes, bytes, LineUse::kMalformed}};
  RuntimeReport& runtime = diagnosis.runtime.emplace();
  runtime.root = runtime.discovery.fxr_folder = tov::WideString(1, char16_t{0xD800});
  runtime.failure = bytes;
  VersionReport& version = runtime.versions.emplace_back();
  version.name = version.words = bytes;
  version.reason = VersionReason::kLoadFailed;
  runtime.decisive = 0;
  diagnosis.environment = {{{bytes, bytes, bytes}}, {{bytes, bytes}}, bytes};
  diagnosis.application.assembly_file = {bytes, FileState::kUnreadable};
  diagnosis.application.frameworks = {{bytes, bytes, RollForward::kMinor, bytes, false, {bytes}, bytes, bytes}};
  ContextProbe& context = diagnosis.application.context.emplace();
  context.child = {ChildEnd::kCrashed, SIGSEGV, {}, bytes, bytes};
  context.host_text = bytes;

  const std::string text = JsonReport(diagnosis);

  std::string_view rest = text;
  while (!rest.empty()) {
    const auto read = tov::text::detail::StrictUtf8CharConverter::Read(rest);
    ASSERT_TRUE(read) << "at byte " << text.size() - rest.size();
    rest.remove_prefix(read->length);
  }
  EXPECT_TRUE(json::parse(text)["settings"]["path"].get<std::string>().starts_with("a\uFFFD\"\\\n\x01"));
}

TEST(JsonReport, SaysWhatWasAskedAndWhere) {
  using namespace std::chrono_literals;
  Head head;
  head.asked = {"/settings", "/root", false, {2500ms}};
  head.machine.host = "app-01";
  head.machine.user_id = 1000;
  head.machine.groups = {"quor"};
  head.machine.limits = {{"NOFILE", 1024, 4096}, {"AS", 5, std::nullopt}};

  const json report = json::parse(JsonReport(Empty(), head));

  EXPECT_EQ(report["asked"],
            (json{{"settings", "/settings"}, {"root", "/root"}, {"probe", false}, {"time_limit", 2.5}}));
  EXPECT_EQ(report["machine"]["host"], "app-01");
  EXPECT_EQ(report["machine"]["user"], nullptr);
  EXPECT_EQ(report["machine"]["user_id"], 1000);
  EXPECT_EQ(report["machine"]["groups"], json::array({"quor"}));
  EXPECT_EQ(report["machine"]["limits"][0], (json{{"name", "NOFILE"}, {"soft", 1024}, {"hard", 4096}}));
  EXPECT_EQ(report["machine"]["limits"][1]["hard"], nullptr);
}

TEST(JsonReport, BytesThatAreNotUtf8AreThereExactlyAsWell) {
  Diagnosis diagnosis = Empty();
  diagnosis.settings.path = "/a\xff";
  diagnosis.environment.variables.resize(2);
  diagnosis.environment.variables[1].now = "\x01\x23\x45\x67\x89\xab\xcd\xef";

  const json report = Parsed(diagnosis);

  EXPECT_EQ(report["inexact"], json::parse(R"([{"place": "/settings/path", "bytes": "2f61ff"},
                                               {"place": "/environment/variables/1/now", "bytes": "0123456789abcdef"}])"));
  EXPECT_EQ(report.at(json::json_pointer("/settings/path")), "/a\uFFFD");
  EXPECT_EQ(Parsed(Empty())["inexact"], json::array());
}

TEST(JsonReport, WhatIsNotSetIsNullAndWhatIsEmptyIsEmpty) {
  Diagnosis diagnosis = Empty();
  diagnosis.environment.variables = {{"A", "0", std::nullopt}, {"B", std::nullopt, ""}};

  const json variables = Parsed(diagnosis)["environment"]["variables"];

  EXPECT_EQ(variables[0], (json{{"name", "A"}, {"action", "set"}, {"value", "0"}, {"now", nullptr}}));
  EXPECT_EQ(variables[1], (json{{"name", "B"}, {"action", "remove"}, {"value", nullptr}, {"now", ""}}));
}

}  // namespace
}  // namespace doctor
