#include "doctor/examine/config/runtime_config.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "doctor/examine/config/launch_variable.h"

namespace doctor {
namespace {

using nlohmann::json;

struct RollForwardName {
  RollForward value;
  const char* name;
};

constexpr auto kRollForwardNames = std::to_array<RollForwardName>({
    {RollForward::kDisable, "Disable"},
    {RollForward::kLatestPatch, "LatestPatch"},
    {RollForward::kMinor, "Minor"},
    {RollForward::kLatestMinor, "LatestMinor"},
    {RollForward::kMajor, "Major"},
    {RollForward::kLatestMajor, "LatestMajor"},
});

// What the older setting rollForwardOnNoCandidateFx says.
constexpr auto kOnNoCandidate =
    std::to_array<RollForward>({RollForward::kLatestPatch, RollForward::kMinor, RollForward::kMajor});

constexpr const char* kRollForward = "rollForward";
constexpr const char* kNoCandidate = "rollForwardOnNoCandidateFx";
constexpr const char* kApplyPatches = "applyPatches";

// Null where there is none.
const json* Member(const json& object, const char* name) {
  const auto found = object.is_object() ? object.find(name) : object.end();
  return object.is_object() && found != object.end() ? &*found : nullptr;
}

// Reads a file's object step by step, up to its first fault.
class Reader {
 public:
  Reader(RuntimeConfig& config, const RollForwardVariables& variables) : config_(config), variables_(variables) {}

  void Read(const json& object) {
    const json* options = Member(object, "runtimeOptions");
    if (options == nullptr || !options->is_object()) {
      Fail(ConfigFault::kNoOptions, {});
      return;
    }
    CheckShapes(*options);
    FrameworkReference all;
    if (!variables_.on_no_candidate.empty()) {
      SetNoCandidate(all, std::atoi(variables_.on_no_candidate.c_str()));
    }
    ReadSettings(*options, all);
    ReadFrameworks(*options, all);
    CheckMixture();
    ApplyVariable();
    ReadIcu(*options);
  }

 private:
  void Fail(ConfigFault fault, const std::string& detail) {
    if (config_.fault == ConfigFault::kNone) {
      config_.fault = fault;
      config_.detail = detail;
    }
  }

  std::string Text(const json& object, const char* name) {
    const json* member = Member(object, name);
    if (member != nullptr && !member->is_string()) {
      Fail(ConfigFault::kMisshapen, name);
    }
    return member != nullptr && member->is_string() ? member->get<std::string>() : std::string();
  }

  void CheckShapes(const json& options) {
    Text(options, "tfm");
    for (const char* name : {"configProperties", "frameworks"}) {
      const json* member = Member(options, name);
      if (member != nullptr && !member->is_object() && !member->is_array()) {
        Fail(ConfigFault::kMisshapen, name);
      }
    }
  }

  static void SetNoCandidate(FrameworkReference& reference, std::int64_t value) {
    if (value >= 0 && value < static_cast<std::int64_t>(kOnNoCandidate.size())) {
      reference.roll_forward = kOnNoCandidate.at(static_cast<std::size_t>(value));
    }
  }

  void ReadSettings(const json& object, FrameworkReference& reference) {
    if (const json* patches = Member(object, kApplyPatches); patches != nullptr && patches->is_boolean()) {
      reference.applies_patches = patches->get<bool>();
      has_older_ = true;
    }
    if (const json* value = Member(object, kNoCandidate); value != nullptr && value->is_number_integer()) {
      SetNoCandidate(reference, value->get<std::int64_t>());
      has_older_ = true;
    }
    if (const std::string name = Text(object, kRollForward); !name.empty()) {
      has_newer_ = true;
      const auto way = RollForwardOf(name);
      reference.roll_forward = way.value_or(reference.roll_forward);
      if (!way) {
        Fail(ConfigFault::kUnknownRollForward, name);
      }
    }
  }

  void ReadFrameworks(const json& options, const FrameworkReference& all) {
    if (const json* single = Member(options, "framework")) {
      ReadFramework(*single, all);
    }
    if (const json* several = Member(options, "frameworks"); several != nullptr && several->is_array()) {
      for (const json& each : *several) {
        ReadFramework(each, all);
      }
    }
  }

  void ReadFramework(const json& object, FrameworkReference reference) {
    reference.name = Text(object, "name");
    reference.version = Text(object, "version");
    if (Member(object, "name") == nullptr) {
      return Fail(ConfigFault::kNoName, {});
    }
    if (Member(object, "version") == nullptr) {
      return Fail(ConfigFault::kNoVersion, reference.name);
    }
    if (std::ranges::find(config_.frameworks, reference.name, &FrameworkReference::name) != config_.frameworks.end()) {
      return Fail(ConfigFault::kNamedTwice, reference.name);
    }
    ReadSettings(object, reference);
    config_.frameworks.push_back(std::move(reference));
  }

  void CheckMixture() {
    if (has_older_ && has_newer_) {
      Fail(ConfigFault::kMixedSettings, {});
    }
  }

  void ApplyVariable() {
    if (variables_.roll_forward.empty()) {
      return;
    }
    const auto way = RollForwardOf(variables_.roll_forward);
    if (!way) {
      return Fail(ConfigFault::kUnknownVariable, variables_.roll_forward);
    }
    for (FrameworkReference& reference : config_.frameworks) {
      reference.roll_forward = *way;
    }
  }

  void ReadIcu(const json& options) {
    const json properties = options.value("configProperties", json::object());
    if (const json* value = Member(properties, "System.Globalization.Invariant")) {
      const std::string text = value->is_string() ? value->get<std::string>() : std::string();
      config_.icu.is_invariant = *value == true || ::strcasecmp(text.c_str(), "true") == 0;
    }
    if (const json* value = Member(properties, "System.Globalization.AppLocalIcu");
        value != nullptr && value->is_string()) {
      config_.icu.own = value->get<std::string>();
    }
  }

  RuntimeConfig& config_;
  const RollForwardVariables& variables_;
  bool has_older_ = false;
  bool has_newer_ = false;
};

}  // namespace

std::optional<RollForward> RollForwardOf(std::string_view name) {
  const std::string text(name);
  const auto* found = std::ranges::find_if(
      kRollForwardNames, [&](const RollForwardName& row) { return ::strcasecmp(row.name, text.c_str()) == 0; });
  return found != kRollForwardNames.end() ? std::optional(found->value) : std::nullopt;
}

RollForwardVariables VariablesOfLaunch() {
  return {LaunchVariable("DOTNET_ROLL_FORWARD").value_or(""),
          LaunchVariable("DOTNET_ROLL_FORWARD_ON_NO_CANDIDATE_FX").value_or(""),
          LaunchVariable("DOTNET_ROLL_FORWARD_TO_PRERELEASE").value_or("") == "1"};
}

RuntimeConfig ReadRuntimeConfig(const std::string& path, const RollForwardVariables& variables) {
  RuntimeConfig config{LookAtFile(path)};
  const json object = ReadObject(config.file);
  if (config.file.state == FileState::kPresent) {
    Reader(config, variables).Read(object);
  }
  return config;
}

}  // namespace doctor
