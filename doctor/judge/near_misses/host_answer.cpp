#include "doctor/judge/near_misses/host_answer.h"

#include <algorithm>
#include <array>

#include "doctor/child/child.h"
#include "doctor/examine/config/json_file.h"
#include "doctor/examine/config/runtime_config.h"
#include "doctor/examine/framework_version.h"
#include "doctor/examine/frameworks.h"
#include "doctor/examine/probe.h"
#include "doctor/judge/words/message.h"
#include "doctor/judge/words/named.h"
#include "doctor/judge/words/names.h"
#include "doctor/judge/words/status_names.h"
#include "doctor/judge/words/text.h"

namespace doctor {
namespace {

// A framework and what is installed to have it.
struct Product {
  std::string_view framework;
  std::string_view name;
};

constexpr auto kProducts = std::to_array<Product>({
    {"Microsoft.NETCore.App", "the .NET runtime"},
    {"Microsoft.AspNetCore.App", "the ASP.NET Core runtime"},
    {"Microsoft.WindowsDesktop.App", "the product for Linux: this one is made for Windows, and needs its runtime"},
});

std::string ProductName(const std::string& framework) {
  const auto* found = std::ranges::find(kProducts, framework, &Product::framework);
  return found != kProducts.end() ? std::string(found->name) : Printable(framework);
}

// "the .NET runtime 6.0.20 or a newer 6.0"
std::string ToInstall(const FrameworkReport& framework) {
  std::string product = ProductName(framework.name) + " " + Printable(framework.version);
  const auto version = FrameworkVersion::Parse(framework.version);
  switch (framework.roll_forward) {
    case RollForward::kDisable:
      return product;
    case RollForward::kLatestPatch:
    case RollForward::kMinor:
    case RollForward::kLatestMinor:
      return version
                 ? product + " or a newer " + std::to_string(version->Major()) + "." + std::to_string(version->Minor())
                 : product;
    case RollForward::kMajor:
    case RollForward::kLatestMajor:
      break;
  }
  return product + " or newer";
}

// Of many the newest are named.
std::string ListOf(const std::vector<std::string>& versions) {
  constexpr std::size_t kMost = 6;
  std::string list = versions.size() > kMost ? "among others " : "";
  for (std::size_t at = versions.size() - std::min(versions.size(), kMost); at < versions.size(); ++at) {
    const bool isLast = at + 1 == versions.size();
    list += Printable(versions[at]) + (isLast ? "" : at + 2 == versions.size() ? " and " : ", ");
  }
  return list;
}

std::string WhatIsThere(const FrameworkReport& framework, const std::string& root) {
  const auto wanted = FrameworkVersion::Parse(framework.version);
  if (!wanted) {
    return ", and " + Quoted(framework.version) + " is not a version";
  }
  if (framework.found.empty()) {
    return ", and there is none under " + Printable(root);
  }
  if (const auto newest = FrameworkVersion::Parse(framework.found.back()); newest && *newest < *wanted) {
    return ", and " + Printable(framework.found.back()) + " is the newest under " + Printable(root);
  }
  return std::string("; under ") + Printable(root) + " there " + (framework.found.size() == 1 ? "is " : "are ") +
         ListOf(framework.found) + ", and roll-forward is " +
         std::string(RowOf(kRollForwards, framework.roll_forward).code);
}

}  // namespace

std::optional<Clue> Explaining(const ApplicationReport& report, const Answers& answers, Clue clue) {
  const auto& context = report.context;
  const bool hasAnswered = context && context->child.end == ChildEnd::kFinished;
  if (hasAnswered && context->IsUsable()) {
    return std::nullopt;
  }
  clue.values.emplace("source", hasAnswered ? "(hostfxr: " + Hex(context->result) + " " +
                                                  std::string(HostStatusName(context->result)) + ")"
                                            : clue.place + " says so.");
  clue.may_decide =
      !context || (hasAnswered ? std::ranges::find(answers.statuses, static_cast<std::uint32_t>(context->result)) !=
                                     answers.statuses.end()
                               : answers.ends_process);
  return clue;
}

std::optional<Clue> MissingFramework(const ApplicationReport& report) {
  const auto missing = std::ranges::find(report.frameworks, std::optional(false), &FrameworkReport::is_there);
  if (missing == report.frameworks.end()) {
    return std::nullopt;
  }
  return Explaining(report, {{kFrameworkMissing}},
                    {Printable(missing->named_by),
                     {{"framework", Printable(missing->name)},
                      {"version", Printable(missing->version)},
                      {"there", WhatIsThere(*missing, report.root)},
                      {"product", ToInstall(*missing)}}});
}

std::optional<Clue> ConflictingFrameworks(const ApplicationReport& report) {
  if (!report.conflict) {
    return std::nullopt;
  }
  return Explaining(report, {{kFrameworkIncompatible}},
                    {Printable(report.runtime_config.path),
                     {{"framework", Printable(report.conflict->name)},
                      {"lower", Printable(report.conflict->lower)},
                      {"higher", Printable(report.conflict->higher)}}});
}

}  // namespace doctor
