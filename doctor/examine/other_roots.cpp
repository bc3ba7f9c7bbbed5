#include "doctor/examine/other_roots.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "foundation/strings.h"
#include "foundation/utf.h"
#include "netloader/netloaderhostfxr/src/version_discovery.h"
#include "netloader/netloaderquorcommon/src/settings_constants.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;
using netloader::FxrFolderState;
using tov::text::ToUtf16;
using tov::text::ToUtf8;

constexpr const char* kFrameworks = "shared/Microsoft.NETCore.App";
// A folder without it is none to the host, such as one that a removed package left behind.
constexpr const char* kMark = "Microsoft.NETCore.App.deps.json";

std::string Variable(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

std::string FirstLine(const std::string& file) {
  std::error_code ignored;
  std::string line;
  if (fs::is_regular_file(file, ignored)) {
    std::ifstream stream(file);
    std::getline(stream, line);
  }
  return line;
}

// The folder that holds the command; behind links, as most installations link to it.
std::string FolderOfCommand(const std::string& name) {
  std::istringstream path(name.empty() ? "" : Variable("PATH"));
  for (std::string folder; std::getline(path, folder, ':');) {
    std::error_code error;
    const fs::path command = fs::canonical(fs::path(folder) / name, error);
    if (!error && fs::path(folder).is_absolute()) {
      return command.parent_path().string();
    }
  }
  return {};
}

// Two names lead to the same folder exactly when these texts are equal.
std::string Identity(const std::string& folder) {
  std::error_code error;
  const fs::path canonical = fs::canonical(folder, error);
  return error ? fs::path(folder + "/").lexically_normal().string() : canonical.string() + "/";
}

RootState StateOf(const RuntimeReport& runtime, const RootProber& prober) {
  if (runtime.discovery.state != FxrFolderState::kWalked) {
    return RootState::kNothing;
  }
  if (runtime.Decisive() == nullptr) {
    return RootState::kNoVersion;
  }
  return !prober ? RootState::kNotLoaded : prober(runtime) ? RootState::kServes : RootState::kRefused;
}

OtherRoot Examine(const RootPlace& place, const RootProber& prober) {
  const RuntimeReport runtime = ExamineRuntime(ToUtf16(place.folder), {});
  const VersionReport* decisive = runtime.Decisive();
  return {place, StateOf(runtime, prober), decisive != nullptr ? decisive->name : "", HasFramework(place.folder)};
}

}  // namespace

bool IsUsable(const OtherRoot& root) {
  return root.state == RootState::kServes || (root.state == RootState::kNotLoaded && root.has_framework);
}

std::vector<RootPlace> RootPlaces(const InstallPlaces& places) {
  std::vector<RootPlace> found;
  const auto add = [&](const std::string& folder, const std::string& namedBy) {
    if (fs::path(folder).is_absolute()) {
      found.push_back({folder, namedBy});
    }
  };
  for (const std::string& variable : places.variables) {
    add(Variable(variable.c_str()), variable);
  }
  for (const std::string& file : places.files) {
    add(FirstLine(file), file);
  }
  for (const std::string& folder : places.folders) {
    add(folder, "");
  }
  if (!places.folder_at_home.empty()) {
    add((fs::path(Variable("HOME")) / places.folder_at_home).string(), "");
  }
  add(FolderOfCommand(places.command), places.command);
  return found;
}

std::vector<OtherRoot> ExamineOtherRoots(const std::vector<RootPlace>& places, const std::string& known,
                                         const RootProber& prober) {
  std::set<std::string> seen;
  if (!known.empty()) {
    seen.insert(Identity(known));
  }
  std::vector<OtherRoot> roots;
  const auto isFound = [&] { return !roots.empty() && roots.back().place.is_meant && IsUsable(roots.back()); };
  for (const RootPlace& place : places) {
    if (!isFound() && seen.insert(Identity(place.folder)).second) {
      roots.push_back(Examine(place, prober));
    }
  }
  return roots;
}

bool HasFramework(const std::string& root) {
  const std::string prefix = ToUtf8(netloader::quor::kDotnetVersionPrefix);
  std::error_code error;
  for (auto entry = fs::directory_iterator(fs::path(root) / kFrameworks, error);
       !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::error_code ignored;
    if (entry->path().filename().string().starts_with(prefix) && fs::exists(entry->path() / kMark, ignored)) {
      return true;
    }
  }
  return false;
}

}  // namespace doctor
