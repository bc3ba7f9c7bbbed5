#include "doctor/examine/application_report.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "foundation/file_descriptor.h"
#include "foundation/utf.h"
#include "launcher/product/product.h"
#include "netloader/netloaderhostfxr/src/assembly_path.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

FileReport LookAtFile(const std::string& path) {
  const auto file = tov::posix::OpenForReading(AT_FDCWD, path.c_str());
  if (!file.IsOpen()) {
    return {path, errno == ENOENT || errno == ENOTDIR ? FileState::kMissing : FileState::kUnreadable, errno};
  }
  struct stat status {};
  const bool isFile = ::fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode);
  return {path, isFile ? FileState::kPresent : FileState::kUnreadable};
}

// The file's object; marks the file when it holds none.
json ReadObject(FileReport& file) {
  if (file.state != FileState::kPresent) {
    return json::object();
  }
  std::ifstream stream(file.path);
  // Comments are allowed in both files.
  json object = json::parse(stream, nullptr, /*allow_exceptions=*/false, /*ignore_comments=*/true);
  if (!object.is_object()) {
    file.state = FileState::kMalformed;
    return json::object();
  }
  return object;
}

std::string Text(const json& object, const char* name) {
  const auto found = object.find(name);
  return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

json Member(const json& object, const char* name) {
  const auto found = object.is_object() ? object.find(name) : object.end();
  return object.is_object() && found != object.end() ? *found : json();
}

unsigned int Major(std::string_view version) {
  unsigned int major = 0;
  std::from_chars(version.data(), version.data() + version.size(), major);
  return major;
}

// Whether a version of the framework is there that the host could take: the same major one, or a later one where the
// application lets it roll forward that far. Which one it really takes is the host's to say.
bool IsThere(const fs::path& root, const std::string& name, const std::string& version, bool anyMajor) {
  std::error_code error;
  for (auto entry = fs::directory_iterator(root / "shared" / name, error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    const unsigned int found = Major(entry->path().filename().string());
    if (found == Major(version) || (anyMajor && found > Major(version))) {
      return true;
    }
  }
  return false;
}

std::vector<FrameworkReport> Frameworks(const json& config, const fs::path& root) {
  const json options = Member(config, "runtimeOptions");
  json named = Member(options, "frameworks");
  if (!named.is_array()) {
    named = json::array();
  }
  if (const json single = Member(options, "framework"); single.is_object()) {
    named.push_back(single);
  }
  const std::string roll = options.is_object() ? Text(options, "rollForward") : std::string();
  std::vector<FrameworkReport> frameworks;
  for (const json& each : named) {
    if (each.is_object() && !Text(each, "name").empty()) {
      const std::string name = Text(each, "name");
      const std::string version = Text(each, "version");
      const bool anyMajor = roll.ends_with("Major");
      frameworks.push_back(
          {name, version, root.empty() ? std::nullopt : std::optional(IsThere(root, name, version, anyMajor))});
    }
  }
  return frameworks;
}

}  // namespace

ApplicationReport ExamineApplication(const tov::WideString& root, const ContextProber& prober) {
  ApplicationReport report;
  report.assembly = netloader::AssemblyPath(launcher::kAssemblyFileName);
  const std::string path = tov::text::ToUtf8(report.assembly);
  const std::string stem = fs::path(path).replace_extension().string();
  report.assembly_file = LookAtFile(path);
  report.runtime_config = LookAtFile(stem + ".runtimeconfig.json");
  report.dependencies = LookAtFile(stem + ".deps.json");
  report.frameworks = Frameworks(ReadObject(report.runtime_config), tov::text::ToUtf8(root));
  ReadObject(report.dependencies);
  if (prober) {
    report.context = prober();
  }
  return report;
}

}  // namespace doctor
