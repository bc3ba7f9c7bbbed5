#include "doctor/examine/start_report.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <set>
#include <sstream>
#include <utility>

#include "doctor/examine/assembly/managed_assembly.h"
#include "doctor/examine/config/collector_options.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

constexpr const char* kCoreLibrary = "System.Private.CoreLib";
// What every assembly's first types are looked for in.
constexpr const char* kFacade = "System.Runtime";
constexpr auto kNeededLibraries = std::to_array<const char*>({"libcoreclr.so", "libclrjit.so", "libSystem.Native.so"});

// The runtime looks for assemblies without regard to the case of letters.
std::string Folded(std::string name) {
  std::ranges::transform(name, name.begin(),
                         [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return name;
}

class FileReader {
 public:
  FileReader(const std::string& application, std::vector<BrokenFile>& broken)
      : application_(ReadManagedAssembly(application)),
        folder_(fs::path(application).parent_path()),
        broken_(broken),
        listed_{Folded(fs::path(application).stem())} {}

  void ReadApplication(const std::string& path) {
    if (!Keep(BrokenAssembly(path, Need::kMain, true)) && application_ && !application_->has_entry_point) {
      Keep(BrokenFile{.path = path, .need = Need::kMain, .is_application = true, .detail = "it has no first function"});
    }
  }

  // An assembly that is needed at once is compared with the name that it is looked for by.
  void ReadAssembly(const std::string& path) {
    const std::string name = fs::path(path).stem();
    const bool isApplication = fs::path(path).parent_path() == folder_;
    const Need need = NeedOf(name);
    listed_.insert(Folded(name));
    if (!Keep(BrokenAssembly(path, need, isApplication)) && need == Need::kMain) {
      const auto found = ReadManagedAssembly(path);
      if (found && found->name != name) {
        Keep(BrokenFile{.path = path, .need = need, .is_application = isApplication, .detail = "it is " + found->name});
      }
    }
  }

  // What Main needs and the runtime is not told of should lie beside the application.
  void ReadUnlisted() {
    for (const std::string& name : application_ ? application_->first_needed : std::vector<std::string>()) {
      if (!listed_.contains(Folded(name))) {
        const std::string path = folder_ / (name + ".dll");
        const bool isThere = fs::exists(fs::symlink_status(path, ignored_));
        const char* detail = isThere ? "not listed in the application's deps.json" : "missing";
        Keep(BrokenFile{
            .path = path, .need = Need::kMain, .is_application = true, .detail = detail, .is_listed = !isThere});
      }
    }
  }

  void ReadLibrary(const std::string& path, Need need) { Keep(BrokenLibrary(path, need)); }

 private:
  bool Keep(std::optional<BrokenFile> file) {
    if (file) {
      file->is_named = Has(&ManagedAssembly::references, fs::path(file->path).stem());
      broken_.push_back(std::move(*file));
    }
    return file.has_value();
  }

  bool Has(std::vector<std::string> ManagedAssembly::*names, const std::string& name) const {
    return application_ && std::ranges::find(*application_.*names, name) != (*application_.*names).end();
  }

  Need NeedOf(const std::string& name) const {
    return name == kCoreLibrary                                           ? Need::kStart
           : name == kFacade || Has(&ManagedAssembly::first_needed, name) ? Need::kMain
                                                                          : Need::kLater;
  }

  const std::optional<ManagedAssembly> application_;
  const fs::path folder_;
  std::vector<BrokenFile>& broken_;
  std::set<std::string> listed_;
  std::error_code ignored_;
};

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
  reader.ReadApplication(assembly);
  std::istringstream list(assemblies);
  for (std::string path; std::getline(list, path, ':');) {
    if (path.empty() || path == assembly) {
      continue;
    }
    reader.ReadAssembly(path);
    if (fs::path(path).stem() == kCoreLibrary) {
      ReadLibraries(fs::path(path).parent_path(), reader);
    }
  }
  reader.ReadUnlisted();
}

}  // namespace

const BrokenFile* StartReport::Decisive() const {
  // A runtime that has started has had all that starting takes, whatever its files look like.
  const auto counts = [this](const BrokenFile& file) {
    return (file.need == Need::kStart && !probe.HasStarted()) || (file.need == Need::kMain && !probe.HasFailed());
  };
  const auto found = std::ranges::find_if(broken, counts);
  return found != broken.end() ? &*found : nullptr;
}

const BrokenFile* StartReport::Named() const {
  const auto found = std::ranges::find(broken, true, &BrokenFile::is_named);
  return found != broken.end() ? &*found : nullptr;
}

StartReport ExamineStart(const std::string& assembly, const std::string& assemblies, const StartProber& prober) {
  StartReport report{prober()};
  if (!assemblies.empty()) {
    FileReader reader(assembly, report.broken);
    ReadFiles(assembly, assemblies, reader);
    std::ranges::stable_sort(report.broken, {}, &BrokenFile::need);
  }
  report.surroundings = LookAround();
  report.collector_options = CollectorOptions(assembly);
  return report;
}

}  // namespace doctor
