// A tree of folders, files, pipes and links, a line for each: the walk through it meets what a plain recursive one
// meets, and the versions found are those that the rules accept.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "foundation/directory_enumerator.h"
#include "foundation/file_find.h"
#include "foundation/utf.h"
#include "fuzz/support.h"
#include "netloader/netloaderhostfxr/src/version_discovery.h"

namespace fs = std::filesystem;
using netloader::VersionVerdict;

namespace {

constexpr std::size_t kMostLines = 64;

// Folder and entry.
using Visit = std::pair<std::string, std::string>;

// The relative path without anything that leads out of the tree.
fs::path Tamed(std::string_view path) {
  fs::path tame;
  for (const fs::path& name : fs::path(path.substr(0, path.find('\0'))).relative_path()) {
    if (name != "." && name != ".." && !name.empty()) {
      tame /= name;
    }
  }
  return tame;
}

// Nothing if something is there already: opening a pipe would wait.
void MakeFile(const fs::path& path) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (file >= 0) {
    ::close(file);
  }
}

// "d folder", "f file", "p pipe", "l link target". What cannot be made is left out.
void MakeEntry(const fs::path& folder, std::string_view line) {
  std::error_code error;
  const std::string_view kind = Lines::Word(line);
  const fs::path path = folder / Tamed(kind == "l" ? Lines::Word(line) : line);
  if (kind == "d") {
    fs::create_directories(path, error);
    return;
  }
  fs::create_directories(path.parent_path(), error);
  if (kind == "f") {
    MakeFile(path);
  } else if (kind == "p") {
    ::mkfifo(path.c_str(), 0600);
  } else if (kind == "l") {
    fs::create_symlink(line.substr(0, line.find('\0')), path, error);
  }
}

// A root with the tree under host/fxr, gone at the end.
class Tree {
 public:
  explicit Tree(std::string_view text) {
    std::string pattern = fs::temp_directory_path() / "fuzz-walk-XXXXXX";
    root_ = ::mkdtemp(pattern.data());
    fs::create_directories(Fxr());
    Lines lines(text);
    for (std::size_t i = 0; i < kMostLines && !lines.IsAtEnd(); ++i) {
      MakeEntry(Fxr(), lines.Next());
    }
  }
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;
  ~Tree() { fs::remove_all(root_); }

  const fs::path& Root() const { return root_; }
  fs::path Fxr() const { return root_ / "host" / "fxr"; }

 private:
  fs::path root_;
};

std::vector<std::string> EntriesOf(const std::string& folder) {
  std::vector<std::string> names;
  DIR* const stream = ::opendir(folder.c_str());
  Require(stream != nullptr);
  while (const dirent* entry = ::readdir(stream)) {
    names.emplace_back(entry->d_name);
  }
  ::closedir(stream);
  return names;
}

bool IsFolder(const std::string& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool IsFile(const std::string& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// A folder takes the place of its entry.
void Walk(const std::string& folder, std::vector<Visit>& visits) {
  for (const std::string& name : EntriesOf(folder)) {
    if (name != "." && name != ".." && IsFolder(folder + "/" + name)) {
      Walk(folder + "/" + name, visits);
    } else {
      visits.emplace_back(folder, name);
    }
  }
}

void CheckWalk(const fs::path& root, const std::vector<Visit>& expected) {
  using Strategy = tov::filesystem::NoFollowSymLinksResolvingStrategy;
  tov::filesystem::DirectoryEnumerator<Strategy, tov::posix::filesystem::FileFind> walk;
  Require(walk.Open(tov::text::ToUtf16(root.native()), Strategy()) == 0);
  for (const auto& [folder, entry] : expected) {
    Require(!walk.IsFinished() && walk.CurrentFolder() == folder && walk.CurrentEntry() == entry);
    walk.Next();
  }
  Require(walk.IsFinished());
}

// Name, verdict.
using Found = std::vector<std::pair<std::u16string, VersionVerdict>>;

VersionVerdict Judge(const std::string& fxr, const std::string& version) {
  const std::string library = fxr + "/" + version + "/l.so";
  struct stat status {};
  if (!version.starts_with("6.0.")) {
    return VersionVerdict::kWrongPrefix;
  }
  if (::lstat(library.c_str(), &status) != 0) {
    return VersionVerdict::kNoLibrary;
  }
  return IsFile(library)           ? VersionVerdict::kAccepted
         : S_ISLNK(status.st_mode) ? VersionVerdict::kLibraryIsLink
                                   : VersionVerdict::kLibraryIsNoFile;
}

// A folder counts each time that the walk comes to it from another one. One that has no wide name is an empty path,
// which is no folder, and is forgotten at once; before the first version it passes for the one looked at last.
Found Versions(const std::string& fxr, const std::vector<Visit>& visits) {
  Found found;
  std::u16string last;
  for (const auto& [folder, entry] : visits) {
    const std::u16string wide = tov::text::ToUtf16(folder);
    if (folder == fxr || wide == last) {
      continue;
    }
    const std::string path = tov::text::ToUtf8(wide);
    if (!IsFolder(path)) {
      found.emplace_back(wide, VersionVerdict::kNotAFolder);
      continue;
    }
    last = wide;
    const std::string version = path.substr(path.rfind('/') + 1);
    found.emplace_back(tov::text::ToUtf16(version), Judge(fxr, version));
  }
  return found;
}

void CheckVersions(const fs::path& root, const Found& expected) {
  const auto discovery = netloader::DiscoverVersions(tov::text::ToUtf16(root.native()), u"6.0.", u"l.so");
  Require(discovery.state == netloader::FxrFolderState::kWalked);
  Found found;
  std::vector<std::u16string> accepted;
  for (const auto& finding : discovery.findings) {
    found.emplace_back(finding.name, finding.verdict);
    if (finding.verdict == VersionVerdict::kAccepted) {
      accepted.push_back(finding.name);
    }
  }
  Require(found == expected && discovery.Accepted() == accepted);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Tree tree(AsText(data, size));
  std::vector<Visit> visits;
  Walk(tree.Fxr(), visits);

  CheckWalk(tree.Fxr(), visits);
  CheckVersions(tree.Root(), Versions(tree.Fxr(), visits));
  return 0;
}
