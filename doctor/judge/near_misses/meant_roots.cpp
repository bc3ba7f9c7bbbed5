#include "doctor/judge/near_misses/meant_roots.h"

#include <filesystem>
#include <string_view>

#include "doctor/judge/near_misses/settings_line.h"
#include "doctor/judge/words/text.h"
#include "foundation/strings.h"
#include "foundation/utf.h"
#include "netloader/netloaderhostfxr/src/version_discovery.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

// Where the file really is: the dotnet command is a link in most installations.
std::string FolderOf(const fs::path& file) {
  std::error_code error;
  const fs::path real = fs::canonical(file, error);
  return (error ? file : real).parent_path().string();
}

// The root that was probably meant when it ends in host/fxr or host.
std::string RootAbove(std::string_view path) {
  while (path.size() > 1 && path.ends_with('/')) {
    path.remove_suffix(1);
  }
  for (const std::string_view end : {"/host/fxr", "/host"}) {
    if (path.ends_with(end)) {
      path.remove_suffix(end.size());
      return std::string(path.empty() ? "/" : path);
    }
  }
  return {};
}

}  // namespace

std::string RootAround(const RuntimeReport& runtime) {
  const std::string root = ToUtf8(runtime.root);
  std::error_code ignored;
  if (fs::is_regular_file(root, ignored)) {
    return FolderOf(root);
  }
  return runtime.discovery.state == netloader::FxrFolderState::kNoStatus ? RootAbove(root) : "";
}

std::vector<std::string> MeantRoots(const SettingsReport& settings, const RuntimeReport* runtime) {
  std::vector<std::string> roots;
  const auto add = [&](const std::string& root) {
    if (!root.empty() && root != ToUtf8(settings.root)) {
      roots.push_back(root);
    }
  };
  for (const SettingsEntry& entry : settings.entries) {
    if (const SettingsLine line = ReadAsMeant(entry, settings); IsAboutRoot(line)) {
      add(MeantValue(line));
    }
  }
  add(runtime != nullptr ? RootAround(*runtime) : "");
  return roots;
}

}  // namespace doctor
