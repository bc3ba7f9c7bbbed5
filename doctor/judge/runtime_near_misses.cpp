#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <exception>
#include <filesystem>
#include <map>
#include <optional>
#include <string_view>

#include "doctor/examine/text.h"
#include "doctor/judge/near_misses.h"
#include "netloader/netloaderhostfxr/src/loadermodule.h"
#include "netloader/netloaderhostfxr/src/version_order.h"
#include "netloader/netloaderquorcommon/src/settings_constants.h"
#include "netloader/utils/path_utils.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;
using netloader::FxrFolderState;

const tov::WideString& Prefix() {
  return netloader::quor::kDotnetVersionPrefix;
}

bool IsDecimal(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, [](unsigned char digit) { return std::isdigit(digit) != 0; });
}

// Digits and dots, with a suffix such as "-preview.1" or without: what a runtime's folder is called.
bool IsVersionName(std::string_view name) {
  return !name.empty() && std::isdigit(static_cast<unsigned char>(name.front())) != 0 &&
         name.find('.') != std::string_view::npos;
}

// The number that a person reads in a version's last part; the largest there is for one that is too long.
unsigned long long PlainNumber(std::string_view tail) {
  unsigned long long number = 0;
  const auto [end, error] = std::from_chars(tail.data(), tail.data() + tail.size(), number);
  return error == std::errc::result_out_of_range ? ~0ULL : number;
}

class Looker {
 public:
  explicit Looker(const RuntimeReport& report) : report_(report), root_(ToUtf8(report.root)) {}

  Warnings Look() {
    LookAtRoot();
    LookAtFxrFolder();
    LookAtEntries();
    for (const VersionReport& version : report_.versions) {
      LookAtLibrary(version);
    }
    LookAtNumbers();
    LookAtOrder();
    return std::move(warnings_);
  }

 private:
  std::string FxrFolder() const { return ToUtf8(report_.discovery.fxrFolder); }

  void LookAtRoot() {
    if (!netloader::utils::CheckIsValidPath(report_.root)) {
      Warn("relative-root", root_, "the runtime root is a relative path, and nothing is loaded from one",
           "name the root by its full path, from / on");
    }
    std::error_code ignored;
    if (fs::is_regular_file(root_, ignored)) {
      Warn("root-is-file", root_, "the runtime root is a file, not the folder of the installation",
           "name the folder that holds it: " + Printable(FolderOf(root_)));
    }
    if (const auto at = RootOfFxr(); !at.empty() && report_.discovery.state == FxrFolderState::kNoStatus) {
      Warn("root-is-fxr", root_, "the runtime root is itself a host/fxr folder; host/fxr is looked for below the root",
           "name the installation's folder: " + Printable(at));
    }
  }

  // Where the file really is: the dotnet command is a link in most installations.
  static std::string FolderOf(const fs::path& file) {
    std::error_code error;
    const fs::path real = fs::canonical(file, error);
    return (error ? file : real).parent_path().string();
  }

  // The root that was probably meant when it ends in host/fxr or host.
  std::string RootOfFxr() const {
    std::string_view path = root_;
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

  void LookAtFxrFolder() {
    const std::string folder = FxrFolder();
    if (report_.discovery.state == FxrFolderState::kIsLink) {
      Warn("folder-is-link", folder, "the folder is a symbolic link, and links are not followed",
           "replace the link by the folder it leads to");
    }
    if (report_.discovery.state == FxrFolderState::kUnreadable) {
      WarnNotEntered(folder);
    } else if (report_.discovery.state == FxrFolderState::kNoStatus) {
      LookAtFoldersAbove(folder);
    }
    struct statvfs system {};
    if (::statvfs(folder.c_str(), &system) == 0 && (system.f_flag & ST_NOEXEC) != 0) {
      Warn("noexec", folder, "the file system is mounted noexec, so nothing can be loaded from it",
           "mount it with exec, or install the runtime elsewhere");
    }
  }

  // A folder above that cannot be searched hides all that is in it.
  void LookAtFoldersAbove(const fs::path& folder) {
    fs::path above;
    for (const fs::path& name : folder.parent_path()) {
      above /= name;
      std::error_code ignored;
      if (fs::is_directory(above, ignored) && !MayUse(above, X_OK)) {
        WarnNotEntered(above.string());
        return;
      }
    }
  }

  // With the rights that a launch by this user has.
  static bool MayUse(const fs::path& folder, int mode) {
    return ::faccessat(AT_FDCWD, folder.c_str(), mode, AT_EACCESS) == 0;
  }

  void WarnNotEntered(const std::string& folder) {
    Warn("folder-not-entered", folder, "this user cannot enter the folder",
         "let the user that launches read and enter it");
  }

  // What the walk does not tell of: it enters neither links nor closed folders.
  void LookAtEntries() {
    std::error_code error;
    std::map<std::string, fs::path> entries;  // By name, so that the order is always the same.
    for (auto entry = fs::directory_iterator(FxrFolder(), error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
      entries.emplace(entry->path().filename().string(), entry->path());
    }
    for (const auto& [name, path] : entries) {
      LookAtEntry(path);
    }
  }

  void LookAtEntry(const fs::path& path) {
    std::error_code ignored;
    if (fs::is_symlink(path, ignored)) {
      if (fs::is_directory(path, ignored)) {
        Warn("folder-is-link", path.string(), "the folder is a symbolic link, and links are not followed",
             "replace the link by the folder it leads to");
      }
    } else if (fs::is_directory(path, ignored) && !MayUse(path, R_OK | X_OK)) {
      WarnNotEntered(path.string());
    }
  }

  void LookAtLibrary(const VersionReport& version) {
    const std::string path = ToUtf8(version.library);
    if (version.reason == "library-is-link") {
      Warn("library-is-link", path, "the library is a symbolic link, and links are not followed",
           "replace the link by the file it leads to");
    } else if (version.reason == "other-machine") {
      Warn("other-machine", path, "the library is built for another machine or word size",
           "install the runtime for Linux x64");
    } else if (version.reason == "cut-short") {
      Warn("cut-short", path, "the library is " + version.detail, "install that runtime again");
    } else if (version.reason == "wrong-prefix" && IsVersionName(version.name) && IsNewHost(path)) {
      Warn("other-runtime", path,
           "version " + Printable(version.name) + " is installed, but only " + ToUtf8(Prefix()) + "x is looked for",
           "install a .NET 6.0 runtime, if there is none; no other serves");
    }
  }

  static bool IsNewHost(const std::string& path) {
    std::error_code ignored;
    return fs::is_regular_file(path, ignored);
  }

  static std::string_view Tail(const VersionReport& version) {
    return std::string_view(version.name).substr(Prefix().size());
  }

  // Nothing for a name with a lone surrogate, which a launch reads only when there is another to compare it with.
  static std::optional<long> Number(const VersionReport& version) {
    try {
      return netloader::VersionNumber(ToUtf16(version.name), Prefix());
    } catch (const std::exception&) {
      return std::nullopt;
    }
  }

  void LookAtNumbers() {
    std::map<long, const VersionReport*> by_number;
    for (const VersionReport& version : report_.versions) {
      const auto number = version.is_candidate ? Number(version) : std::nullopt;
      if (!number) {
        continue;
      }
      LookAtNumber(version, *number);
      if (const auto [other, added] = by_number.emplace(*number, &version); !added) {
        Warn("equal-numbers", ToUtf8(version.library),
             Printable(version.name) + " and " + Printable(other->second->name) + " count as the same number, " +
                 std::to_string(*number) + ", so their order is not defined",
             "remove one of them");
      }
    }
  }

  void LookAtNumber(const VersionReport& version, long number) {
    const std::string_view tail = Tail(version);
    const std::string counts = Quoted(tail) + " is read as ";
    if (tail.starts_with("0x") || tail.starts_with("0X")) {
      Warn("hexadecimal-number", ToUtf8(version.library), counts + "hexadecimal: " + std::to_string(number),
           "name the folder by its plain version number");
    } else if (tail.size() > 1 && tail[0] == '0' && std::isdigit(static_cast<unsigned char>(tail[1])) != 0) {
      Warn("octal-number", ToUtf8(version.library), counts + "octal: " + std::to_string(number),
           "name the folder by its plain version number, without a zero in front");
    } else if (number == 0 && !tail.starts_with('0')) {
      Warn("no-number", ToUtf8(version.library), counts + "no number at all, and counts as 0",
           "name the folder by its plain version number");
    }
  }

  void LookAtOrder() {
    const VersionReport* earlier = nullptr;
    for (const VersionReport& version : report_.versions) {
      if (!version.is_candidate) {
        continue;
      }
      if (earlier != nullptr && IsDecimal(Tail(*earlier)) && IsDecimal(Tail(version)) &&
          PlainNumber(Tail(*earlier)) < PlainNumber(Tail(version))) {
        Warn("odd-order", FxrFolder(),
             Printable(earlier->name) + " is tried before " + Printable(version.name) +
                 ", against the order that their numbers suggest",
             "name the folders by their plain version numbers");
      }
      earlier = &version;
    }
  }

  void Warn(std::string code, const std::string& place, std::string text, std::string cure) {
    warnings_.push_back({std::move(code), Printable(place), std::move(text), std::move(cure)});
  }

  const RuntimeReport& report_;
  const std::string root_;
  Warnings warnings_;
};

}  // namespace

Warnings RuntimeNearMisses(const RuntimeReport& report) {
  return Looker(report).Look();
}

}  // namespace doctor
