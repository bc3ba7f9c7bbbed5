#include "doctor/examine/machine/launcher_file.h"

#include <unistd.h>

#include <filesystem>
#include <sstream>
#include <string_view>
#include <system_error>

#include "doctor/child/child.h"
#include "doctor/child/signal_name.h"
#include "foundation/strings.h"
#include "foundation/utf.h"
#include "launcher/product/product.h"
#include "netloader/netloaderhostfxr/src/assembly_path.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLauncher = "grellin_loader";
// Where the ABI of the platform has it.
constexpr const char* kDynamicLoader = "/lib64/ld-linux-x86-64.so.2";
constexpr std::string_view kNotFound = "not found";
constexpr std::string_view kError = "error while loading shared libraries: ";

fs::path InstalledFolder() {
  const fs::path assembly = tov::text::ToUtf8(netloader::AssemblyPath(launcher::kAssemblyFileName));
  return assembly.parent_path().parent_path() / "bin";
}

// The whole line of a library or version that is not found, else what follows the loader's own word for an error.
std::string Reason(const std::string& output) {
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    if (const auto error = line.find(kError); error != std::string::npos) {
      return line.substr(error + kError.size());
    }
    if (line.find(kNotFound) != std::string::npos) {
      return line.substr(line.find_first_not_of(" \t"));
    }
  }
  return {};
}

// What `ldd` does, but that the file itself is never started, whatever it is.
Answer ListLibraries(const std::string& path) {
  ::execl(kDynamicLoader, kDynamicLoader, "--list", path.c_str(), nullptr);
  return {};  // A machine that has it elsewhere says nothing.
}

std::string WhatItLacks(const std::string& path, const Patience& patience) {
  const ChildResult listed = RunInChild([&] { return ListLibraries(path); }, "the launcher's libraries", patience);
  if (listed.end == ChildEnd::kCrashed) {
    return "loading it ends with " + SignalName(listed.code);
  }
  const std::string reason = Reason(listed.output);
  const bool hasFailed = listed.end == ChildEnd::kExited && listed.code != 0;
  return reason.empty() && hasFailed ? "the dynamic loader refuses it" : reason;
}

}  // namespace

std::string LauncherBeside() {
  std::error_code error;
  const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
  if (error) {
    return {};
  }
  const fs::path launcher = folder / kLauncher;
  return folder == InstalledFolder() || fs::exists(launcher, error) ? launcher.string() : std::string();
}

LauncherReport ExamineLauncher(const std::string& path, bool load, const Patience& patience) {
  LauncherReport report{path};
  std::error_code ignored;
  report.is_there = fs::is_regular_file(path, ignored);
  report.may_be_executed = report.is_there && ::access(path.c_str(), X_OK) == 0;
  if (report.may_be_executed && load) {
    report.lacks = WhatItLacks(path, patience);
  }
  return report;
}

}  // namespace doctor
