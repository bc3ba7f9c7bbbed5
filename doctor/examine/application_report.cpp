#include "doctor/examine/application_report.h"

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <utility>

#include "foundation/utf.h"
#include "launcher/product/product.h"
#include "netloader/netloaderhostfxr/src/assembly_path.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

// The host prepares the application with the help of a library of the framework that all others are built on.
constexpr const char* kBaseFramework = "Microsoft.NETCore.App";
constexpr const char* kHostPolicy = "libhostpolicy.so";

std::optional<BrokenFile> BrokenHostPolicy(const std::vector<FrameworkReport>& frameworks) {
  const auto base = std::ranges::find(frameworks, kBaseFramework, &FrameworkReport::name);
  if (base == frameworks.end() || base->folder.empty()) {
    return std::nullopt;
  }
  return BrokenLibrary((fs::path(base->folder) / kHostPolicy).string(), Need::kStart);
}

void TakeFrameworks(ApplicationReport& report, const RuntimeConfig& config, const RollForwardVariables& variables) {
  Frameworks found = ResolveFrameworks(config, report.root, variables);
  report.frameworks = std::move(found.reports);
  report.conflict = std::move(found.conflict);
  report.framework_config = std::move(found.broken_config);
  report.host_policy = BrokenHostPolicy(report.frameworks);
}

}  // namespace

ApplicationReport ExamineApplication(const tov::WideString& root, const ContextProber& prober) {
  ApplicationReport report;
  report.assembly = netloader::AssemblyPath(launcher::kAssemblyFileName);
  const std::string path = tov::text::ToUtf8(report.assembly);
  const std::string stem = fs::path(path).replace_extension().string();
  report.assembly_file = LookAtFile(path);
  report.root = tov::text::ToUtf8(root);
  const RollForwardVariables variables = VariablesOfLaunch();
  const RuntimeConfig config = ReadRuntimeConfig(stem + ".runtimeconfig.json", variables);
  report.runtime_config = config.file;
  report.config_fault = config.fault;
  report.config_detail = config.detail;
  if (config.fault == ConfigFault::kNone) {
    TakeFrameworks(report, config, variables);
  }
  report.dependencies = LookAtFile(stem + ".deps.json");
  ReadObject(report.dependencies);
  if (prober) {
    report.context = prober();
  }
  return report;
}

}  // namespace doctor
