#include "doctor/examine/start_report.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <sstream>
#include <utility>

#include "doctor/examine/collector_options.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

constexpr const char* kCoreLibrary = "System.Private.CoreLib.dll";
// What every assembly's first types are looked for in.
constexpr const char* kFacade = "System.Runtime.dll";
constexpr auto kNeededLibraries = std::to_array<const char*>({"libcoreclr.so", "libclrjit.so", "libSystem.Native.so"});

class FileReader {
 public:
  explicit FileReader(std::vector<BrokenFile>& broken) : broken_(broken) {}

  void ReadAssembly(const std::string& path, Need need, bool isApplication) {
    Keep(BrokenAssembly(path, need, isApplication));
  }
  void ReadLibrary(const std::string& path, Need need) { Keep(BrokenLibrary(path, need)); }

 private:
  void Keep(std::optional<BrokenFile> file) {
    if (file) {
      broken_.push_back(std::move(*file));
    }
  }

  std::vector<BrokenFile>& broken_;
};

Need NeedOf(const std::string& name) {
  return name == kCoreLibrary ? Need::kStart : name == kFacade ? Need::kMain : Need::kLater;
}

bool IsNeeded(const std::string& library) {
  return std::ranges::find(kNeededLibraries, library) != kNeededLibraries.end();
}

void ReadLibraries(const fs::path& folder, FileReader& reader) {
  for (const char* library : kNeededLibraries) {
    reader.ReadLibrary(folder / library, Need::kStart);
  }
  std::error_code error;
  for (auto entry = fs::directory_iterator(folder, error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    if (entry->path().extension() == ".so" && !IsNeeded(entry->path().filename())) {
      reader.ReadLibrary(entry->path(), Need::kLater);
    }
  }
}

void ReadFiles(const std::string& assembly, const std::string& assemblies, FileReader& reader) {
  reader.ReadAssembly(assembly, Need::kMain, true);
  std::istringstream list(assemblies);
  for (std::string path; std::getline(list, path, ':');) {
    const std::string name = fs::path(path).filename();
    if (path.empty() || path == assembly) {
      continue;
    }
    reader.ReadAssembly(path, NeedOf(name), false);
    if (name == kCoreLibrary) {
      ReadLibraries(fs::path(path).parent_path(), reader);
    }
  }
}

}  // namespace

const BrokenFile* StartReport::Decisive() const {
  const Need last = probe.HasFailed() ? Need::kStart : Need::kMain;
  return !broken.empty() && broken.front().need <= last ? &broken.front() : nullptr;
}

StartReport ExamineStart(const std::string& assembly, const std::string& assemblies, const StartProber& prober) {
  StartReport report{prober()};
  if (!assemblies.empty()) {
    FileReader reader(report.broken);
    ReadFiles(assembly, assemblies, reader);
    std::ranges::stable_sort(report.broken, {}, &BrokenFile::need);
  }
  report.surroundings = LookAround();
  report.collector_options = CollectorOptions(assembly);
  return report;
}

}  // namespace doctor
