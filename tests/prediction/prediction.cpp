#include "tests/prediction/prediction.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace tests {

using nlohmann::json;
using Texts = std::vector<std::string>;

namespace {

Command Prepared(const std::filesystem::path& program, const StandInHost& host, const Start& start) {
  Command command(program);
  command.LeavesSignalsAlone().Folder(start.folder).Variables(start.variables).Variables(host.Environment());
  if (!start.reads_everything) {
    command.WithoutReadingEverything();
  }
  for (const auto& step : start.steps) {
    command.Before(step);
  }
  return command;
}

// As JSON shows it: what is not valid UTF-8 is replaced.
std::string Shown(const std::string& text) {
  return json::parse(json(text).dump(-1, ' ', false, json::error_handler_t::replace));
}

std::string TextOr(const json& value, const std::string& otherwise) {
  return value.is_string() ? value.get<std::string>() : otherwise;
}

// What a host was given, the handle aside, which is an address.
Texts GivenToHosts(const std::vector<HostCall>& calls) {
  Texts given;
  for (const HostCall& call : calls) {
    if (call.name == "initialize") {
      std::ostringstream text;
      text << call.version << " " << call.fields.at("size") << " " << call.fields.at("host_path") << " "
           << call.fields.at("dotnet_root") << "\n";
      for (const std::string& argument : call.arguments) {
        text << "argument " << argument << "\n";
      }
      for (const auto& [name, value] : call.environment) {
        text << name << "=" << value << "\n";
      }
      given.push_back(text.str());
    }
  }
  return given;
}

// The versions in the order in which they were loaded first.
Texts Loaded(const std::vector<HostCall>& calls) {
  Texts versions;
  for (const HostCall& call : calls) {
    if (call.name == "loaded" && std::ranges::find(versions, call.version) == versions.end()) {
      versions.push_back(call.version);
    }
  }
  return versions;
}

bool BeginsWith(const Texts& texts, const Texts& beginning) {
  return texts.size() >= beginning.size() && std::equal(beginning.begin(), beginning.end(), texts.begin());
}

// How the application ends is its own affair, and no prediction is made of it.
bool ApplicationEndsByItself(const StandInHost& host) {
  return host.Environment().contains("STAND_IN_RUN_EXITS") || host.Environment().contains("STAND_IN_RUN_THROWS");
}

bool SaysSomethingOfItsOwn(const Outcome& launch) {
  return std::ranges::any_of(Texts{"Error occurred", "Unknown failure occurred"},
                             [&](const std::string& words) { return launch.err.find(words) != std::string::npos; });
}

// Where the kernel does not give the executable's path, a sanitizer says so first.
std::string_view WithoutSanitizerLine(std::string_view text) {
  return text.starts_with("==") ? text.substr(text.find('\n') + 1) : text;
}

bool EndsAsPredicted(const json& verdict, const Outcome& launch, const StandInHost& host) {
  const std::string outcome = verdict.at("outcome");
  if (outcome == "runs") {
    return ApplicationEndsByItself(host) || (launch.status == 0 && !SaysSomethingOfItsOwn(launch));
  }
  if (outcome == "status-255") {
    return launch.status == 255 && verdict.at("exit_status") == 255 && !SaysSomethingOfItsOwn(launch);
  }
  if (outcome == "aborts") {
    return launch.signal == SIGABRT &&
           WithoutSanitizerLine(launch.err).starts_with(verdict.at("message").get<std::string>() + "\n");
  }
  if (outcome == "dies") {
    return launch.signal != 0 && !launch.timed_out && !SaysSomethingOfItsOwn(launch) &&
           verdict.at("signal") == std::string("SIG") + ::sigabbrev_np(launch.signal);
  }
  if (outcome == "exits") {
    return verdict.at("exit_status") == launch.status;
  }
  if (outcome == "not-started") {
    return launch.status == 0;
  }
  return (outcome == "not-known" || outcome == "hangs") && launch.timed_out;
}

struct Observed {
  Outcome outcome;
  std::vector<HostCall> calls;
};

Observed Observe(const Command& command, StandInHost& host) {
  host.Forget();
  Outcome outcome = command.Run();
  return {std::move(outcome), host.Calls()};
}

std::string DifferenceInRecords(const json& verdict, const std::string& decisive, const Observed& doctor,
                                const Observed& launch, const StandInHost& host) {
  if (verdict.at("outcome") == "runs" && Shown(host.VersionThatRan()) != decisive) {
    return "another version ran: " + host.VersionThatRan();
  }
  if (std::ranges::any_of(doctor.calls, [](const HostCall& call) { return call.name == "run_app"; })) {
    return "the doctor ran an application";
  }
  // The doctor goes on where a launch has ended, so it may have reported and tried more, but nothing else.
  if (!BeginsWith(GivenToHosts(doctor.calls), GivenToHosts(launch.calls))) {
    return "the doctor's host was given " + ::testing::PrintToString(GivenToHosts(doctor.calls)) +
           ", the launcher's was given " + ::testing::PrintToString(GivenToHosts(launch.calls));
  }
  if (!BeginsWith(Loaded(doctor.calls), Loaded(launch.calls))) {
    return "the doctor tried " + ::testing::PrintToString(Loaded(doctor.calls)) + ", the launcher " +
           ::testing::PrintToString(Loaded(launch.calls));
  }
  return {};
}

// An operator may read the first line only, so its number or signal has to be that of the launch.
bool LineFits(const std::string& line, const Outcome& launch, const std::string& outcome) {
  return outcome == "runs" || outcome == "aborts" || launch.timed_out || SaysHowItEnded(line, launch);
}

int StatusFor(const std::string& outcome) {
  return outcome == "runs" ? 0 : outcome == "not-known" ? 3 : 1;
}

}  // namespace

Comparison Compare(StandInHost& host, const Start& start) {
  const Observed doctor = Observe(Prepared(start.doctor, host, start).Arguments({"--json"}), host);
  const Observed launch = Observe(Prepared(start.launcher, host, start).Timeout(start.patience), host);
  std::ostringstream words;
  words << "\nthe launcher: " << launch.outcome << "\nthe doctor: " << doctor.outcome;
  const json report = json::parse(doctor.outcome.out, nullptr, false);
  if (!report.is_object()) {
    return {"", "", "there is no report" + words.str()};
  }
  const json& verdict = report.at("verdict");
  const json& runtime = report.at("runtime");
  Comparison comparison{verdict.at("outcome"), runtime.is_object() ? TextOr(runtime.at("decisive_version"), "") : "",
                        "", *ReadOpening(doctor.outcome.out)};
  if (!EndsAsPredicted(verdict, launch.outcome, host)) {
    comparison.difference = "it ended otherwise";
  } else if (!LineFits(comparison.opening.line, launch.outcome, comparison.outcome)) {
    comparison.difference = "the first line names another end";
  } else if (doctor.outcome.status != StatusFor(comparison.outcome)) {
    comparison.difference = "the doctor's exit status says something else";
  } else if (start.hosts_record) {
    comparison.difference = DifferenceInRecords(verdict, comparison.decisive, doctor, launch, host);
  }
  if (!comparison.difference.empty()) {
    comparison.difference.append(words.str());
  }
  return comparison;
}

}  // namespace tests
