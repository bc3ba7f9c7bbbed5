#include "doctor/examine/application_report.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>

#include "foundation/utf.h"
#include "launcher/product/product.h"
#include "netloader/netloaderhostfxr/src/assembly_path.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

// The host prepares the application with the help of the framework that all others are built on.
constexpr const char* kBaseFramework = "Microsoft.NETCore.App";
constexpr auto kHostFiles = std::to_array<const char*>({"libhostpolicy.so", "libcoreclr.so"});

void ReadHostFiles(ApplicationReport& report) {
  const auto base = std::ranges::find(report.frameworks, kBaseFramework, &FrameworkReport::name);
  for (const char* name : kHostFiles) {
    const bool isKnown = base != report.frameworks.end() && !base->folder.empty();
    if (auto file = isKnown ? BrokenLibrary((fs::path(base->folder) / name).string(), Need::kStart) : std::nullopt) {
      report.host_files.push_back(std::move(*file));
    }
  }
}

void ReadFrameworkDependencies(ApplicationReport& report) {
  for (const FrameworkReport& framework : report.frameworks) {
    Dependencies read = ReadDependencies((fs::path(framework.folder) / (framework.name + ".deps.json")).string());
    const bool isUsable = read.file.state == FileState::kPresent && read.wanting.empty();
    if (!framework.folder.empty() && !isUsable) {
      report.framework_dependencies = std::move(read);
      return;
    }
  }
}

void TakeFrameworks(ApplicationReport& report, const RuntimeConfig& config, const RollForwardVariables& variables) {
  Frameworks found = ResolveFrameworks(config, report.root, variables);
  report.frameworks = std::move(found.reports);
  report.conflict = std::move(found.conflict);
  report.framework_config = std::move(found.broken_config);
  ReadHostFiles(report);
  ReadFrameworkDependencies(report);
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
  report.icu = config.icu;
  if (config.fault == ConfigFault::kNone) {
    TakeFrameworks(report, config, variables);
  }
  const Dependencies dependencies = ReadDependencies(stem + ".deps.json");
  report.dependencies = dependencies.file;
  report.wanting_dependency = dependencies.wanting;
  if (prober) {
    report.context = prober();
  }
  return report;
}

}  // namespace doctor
