#include "doctor/report/support_report.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

#include "doctor/examine/application_report.h"
#include "doctor/examine/config/json_file.h"
#include "doctor/examine/frameworks.h"
#include "doctor/examine/runtime_report.h"
#include "doctor/examine/settings_report.h"
#include "doctor/judge/words/text.h"
#include "doctor/report/json_report.h"
#include "doctor/report/text_report.h"
#include "foundation/strings.h"
#include "foundation/utf.h"
#include "netloader/netloaderhostfxr/src/version_discovery.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

constexpr auto kPrefixes = std::to_array<std::string_view>(
    {"DOTNET_", "COMPlus_", "CORECLR_", "COREHOST_", "LD_", "LC_", "MALLOC_", "GLIBC_", "ASPNETCORE_"});
constexpr auto kNames =
    std::to_array<std::string_view>({"LANG", "LANGUAGE", "HOME", "PATH", "TMP", "TEMP", "TMPDIR", "TZ"});

bool Matters(std::string_view name) {
  return std::ranges::find(kNames, name) != kNames.end() ||
         std::ranges::any_of(kPrefixes, [name](std::string_view prefix) { return name.starts_with(prefix); });
}

std::vector<std::string> VariableNames() {
  std::vector<std::string> names;
  for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
    const std::string_view text(*variable);
    if (const std::string_view name = text.substr(0, text.find('=')); Matters(name)) {
      names.emplace_back(name);
    }
  }
  std::ranges::sort(names);
  return names;
}

// The versions of the frameworks that the application asks for.
void AddFrameworks(const Diagnosis& diagnosis, std::vector<std::string>& folders) {
  for (const FrameworkReport& framework : diagnosis.application.frameworks) {
    const fs::path versions = fs::path(ToUtf8(diagnosis.runtime->root)) / "shared" / framework.name;
    folders.push_back(versions.string());
    std::error_code failure;
    for (fs::directory_iterator entry(versions, failure), end; !failure && entry != end; entry.increment(failure)) {
      folders.push_back(entry->path().string());
    }
  }
}

std::vector<std::string> FoldersOfALaunch(const Diagnosis& diagnosis) {
  std::vector<std::string> folders = {fs::path(diagnosis.settings.path).parent_path().string(),
                                      fs::path(diagnosis.application.assembly_file.path).parent_path().string()};
  if (diagnosis.runtime) {
    folders.push_back(ToUtf8(diagnosis.runtime->root));
    folders.push_back(ToUtf8(diagnosis.runtime->discovery.fxr_folder));
    for (const VersionReport& version : diagnosis.runtime->versions) {
      folders.push_back(fs::path(ToUtf8(version.library)).parent_path().string());
    }
    AddFrameworks(diagnosis, folders);
  }
  std::erase(folders, "");
  return folders;
}

void AddMissing(Listing& all, const Listing& more) {
  for (const ListedFile& file : more) {
    if (std::ranges::find(all, file.path, &ListedFile::path) == all.end()) {
      all.push_back(file);
    }
  }
}

std::string LineOf(const ListedFile& file) {
  if (file.rights.empty()) {
    return Printable(file.path) + ": " + Printable(file.reason) + "\n";
  }
  std::string line = file.rights + " " + Printable(file.owner + " " + file.group) + " " + std::to_string(file.size);
  line.append(" ").append(Printable(file.path));
  line.append(file.target.empty() ? "" : " -> ").append(Printable(file.target));
  line.append(file.build_id.empty() ? "" : " build id ").append(file.build_id);
  return line.append("\n");
}

std::string LinesOf(const Listing& listing) {
  std::string lines;
  for (const ListedFile& file : listing) {
    lines += LineOf(file);
  }
  return lines;
}

std::string Titled(const std::string& title, const std::string& text) {
  return "\n==== " + title + " ====\n" + text;
}

}  // namespace

Surrounds LookAtSurrounds(const Diagnosis& diagnosis) {
  Surrounds surrounds;
  for (const std::string& folder : FoldersOfALaunch(diagnosis)) {
    AddMissing(surrounds.way, ListTheWayTo(folder));
    surrounds.folders.push_back(ListFolder(folder));
  }
  surrounds.variables = VariableNames();
  return surrounds;
}

std::string SupportReport(const Diagnosis& diagnosis, const Head& head, const Surrounds& surrounds,
                          const std::string& log) {
  std::string text = TextReport(diagnosis, {false, true}, head);
  text += Titled("The way to the folders", LinesOf(surrounds.way));
  for (const Listing& folder : surrounds.folders) {
    text.append(folder.empty() ? "" : "\n").append(LinesOf(folder));
  }
  std::string names;
  for (const std::string& name : surrounds.variables) {
    names.append(Printable(name)).append("\n");
  }
  text += Titled("Variables that are set", names);
  text += Titled("The loader's log", log);
  return text += Titled("The same for machines", JsonReport(diagnosis, head));
}

}  // namespace doctor
