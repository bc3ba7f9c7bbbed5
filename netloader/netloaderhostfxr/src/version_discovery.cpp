#include "netloader/netloaderhostfxr/src/version_discovery.h"

#include <sys/stat.h>

#include <string>
#include <utility>

#include "foundation/convert_to_container.h"
#include "foundation/directory_enumerator.h"
#include "foundation/file_find.h"
#include "foundation/long_path.h"
#include "foundation/path.h"
#include "foundation/result_code.h"
#include "foundation/utf.h"
#include "netloader/utils/path_utils.h"

namespace netloader {

using tov::NarrowString;
using tov::WideString;

const WideString kHostFxrFileName = u"libhostfxr.so";

namespace {

using tov::filesystem::NoFollowSymLinksResolvingStrategy;
using tov::filesystem::detail::PathImplBase;
using Enumerator =
    tov::filesystem::DirectoryEnumerator<NoFollowSymLinksResolvingStrategy, tov::posix::filesystem::FileFind>;

const WideString kHostFolder = u"host";
const WideString kFxrFolder = u"fxr";

// A file's mode, or why it cannot be had. A final link is not followed: only what is installed under the root itself is
// to be loaded, not what some link points at.
struct FileMode {
  mode_t mode;
  int result;
};

FileMode ModeOf(const WideString& path) {
  NarrowString bytes;
  struct stat status {};
  int result = tov::text::Utf16ToUtf8::Do(path, bytes, 0);
  if (!tov::result_code::IsFailure(result)) {
    result = tov::posix::filesystem::detail::long_path::Stat(bytes.c_str(), status);
  }
  return {status.st_mode, result};
}

FxrFolderState JudgeFxrFolder(const FileMode& folder) {
  if (tov::result_code::IsFailure(folder.result)) {
    return FxrFolderState::kNoStatus;
  }
  if (S_ISLNK(folder.mode)) {
    return FxrFolderState::kIsLink;
  }
  return S_ISDIR(folder.mode) ? FxrFolderState::kWalked : FxrFolderState::kNotAFolder;
}

VersionVerdict JudgeLibrary(const FileMode& library) {
  if (tov::result_code::IsFailure(library.result)) {
    return VersionVerdict::kNoLibrary;
  }
  if (S_ISLNK(library.mode)) {
    return VersionVerdict::kLibraryIsLink;
  }
  return S_ISREG(library.mode) ? VersionVerdict::kAccepted : VersionVerdict::kLibraryIsNoFile;
}

// Looks at each folder that the walk comes through.
class VersionWalk {
 public:
  VersionWalk(Discovery& discovery, const WideString& prefix, const WideString& library, DiscoveryListener& listener)
      : discovery_(discovery), prefix_(prefix), library_(library), listener_(listener) {}

  void Examine(const NarrowString& folder) {
    if (folder == last_processed_bytes_) {
      return;
    }
    WideString path = tov::text::ToUtf16(folder);  // A name that is not UTF-8 makes it empty, and so no folder.
    if (path == last_processed_ || path == discovery_.fxr_folder) {
      return;
    }
    const FileMode mode = ModeOf(path);
    if (tov::result_code::IsFailure(mode.result) || !S_ISDIR(mode.mode)) {
      Keep({std::move(path), VersionVerdict::kNotAFolder, mode.result});
      return;
    }
    last_processed_bytes_ = folder;
    last_processed_ = std::move(path);
    WideString version = utils::GetLastFolderName(last_processed_);
    listener_.VersionMet(discovery_.fxr_folder, version);
    Keep(JudgeVersion(std::move(version)));
  }

 private:
  VersionFinding JudgeVersion(WideString version) const {
    if (!version.starts_with(prefix_)) {
      return {std::move(version), VersionVerdict::kWrongPrefix};
    }
    const FileMode library = ModeOf(HostLibraryPath(discovery_.fxr_folder, version, library_));
    return {std::move(version), JudgeLibrary(library), library.result};
  }

  void Keep(VersionFinding finding) {
    discovery_.findings.push_back(std::move(finding));
    listener_.FolderJudged(discovery_.findings.back());
  }

  Discovery& discovery_;
  const WideString& prefix_;
  const WideString& library_;
  DiscoveryListener& listener_;
  WideString last_processed_;
  NarrowString last_processed_bytes_;  // The same, to spare the conversion for the other entries of the folder.
};

}  // namespace

std::vector<WideString> Discovery::Accepted() const {
  std::vector<WideString> accepted;
  for (const VersionFinding& finding : findings) {
    if (finding.verdict == VersionVerdict::kAccepted) {
      accepted.push_back(finding.name);
    }
  }
  return accepted;
}

Discovery DiscoverVersions(const WideString& root, const WideString& prefix, const WideString& library,
                           DiscoveryListener& listener) {
  Discovery discovery;
  discovery.fxr_folder = FxrFolder(root);
  const FileMode folder = ModeOf(discovery.fxr_folder);
  discovery.state = JudgeFxrFolder(folder);
  discovery.result = folder.result;
  if (discovery.state != FxrFolderState::kWalked) {
    return discovery;
  }
  Enumerator enumerator;
  discovery.result = enumerator.Open(discovery.fxr_folder, NoFollowSymLinksResolvingStrategy());
  if (tov::result_code::IsFailure(discovery.result)) {
    discovery.state = FxrFolderState::kUnreadable;
    return discovery;
  }
  VersionWalk walk(discovery, prefix, library, listener);
  for (; !enumerator.IsFinished(); enumerator.Next()) {
    walk.Examine(enumerator.CurrentFolder());
  }
  return discovery;
}

Discovery DiscoverVersions(const WideString& root, const WideString& prefix, const WideString& library) {
  struct : DiscoveryListener {
    void VersionMet(const WideString& /*fxrFolder*/, const WideString& /*version*/) override {}
    void FolderJudged(const VersionFinding& /*finding*/) override {}
  } nobody;
  return DiscoverVersions(root, prefix, library, nobody);
}

WideString FxrFolder(const WideString& root) {
  WideString folder = root;
  PathImplBase::PathAppend(folder, kHostFolder);
  return PathImplBase::PathAppend(folder, kFxrFolder);
}

WideString HostLibraryPath(const WideString& fxrFolder, const WideString& version, const WideString& library) {
  WideString path;
  path.reserve(fxrFolder.size() + 1 + version.size() + 1 + library.size());
  path = fxrFolder;
  PathImplBase::PathAppend(path, version);
  return PathImplBase::PathAppend(path, library);
}

}  // namespace netloader
