// Which runtime hosts are installed under a .NET root.
#pragma once

#include <vector>

#include "foundation/strings.h"

namespace netloader {

extern const tov::WideString kHostFxrFileName;  ///< "libhostfxr.so"

/// What was thought of one version folder.
enum class VersionVerdict {
  kAccepted,
  kNotAFolder,       ///< Gone or changed since it was listed.
  kWrongPrefix,      ///< The name does not begin with the version prefix.
  kNoLibrary,        ///< The library's status cannot be read: it is not there, most often.
  kLibraryIsLink,    ///< A symbolic link, whatever it points at.
  kLibraryIsNoFile,  ///< A folder, a device, ...
};

/// One folder under host/fxr, at any depth.
struct VersionFinding {
  tov::WideString name;  ///< The version, which is the folder's last name; for `kNotAFolder` the folder's whole path.
  VersionVerdict verdict;
  int result = 0;  ///< Why a status could not be read, as a result code.
};

/// What became of looking into the host/fxr folder.
enum class FxrFolderState {
  kWalked,
  kNoStatus,    ///< Its status cannot be read: it is not there, most often.
  kIsLink,      ///< A symbolic link, even one to a folder.
  kNotAFolder,  ///< Anything else that is not a folder.
  kUnreadable,  ///< A folder that cannot be opened.
};

/// All that was found, in the order in which it was met. A folder that is met again when the walk comes back to it from
/// a subfolder is found twice.
struct Discovery {
  tov::WideString fxr_folder;
  FxrFolderState state = FxrFolderState::kWalked;
  int result = 0;  ///< Why the folder was not walked, as a result code.
  std::vector<VersionFinding> findings;

  /// The names of the accepted versions, in the order in which they were met.
  std::vector<tov::WideString> Accepted() const;
};

/// Hears of each version folder while the walk is there.
class DiscoveryListener {
 public:
  /// A version is about to be judged by its name and its library.
  virtual void VersionMet(const tov::WideString& fxrFolder, const tov::WideString& version) = 0;
  /// A version was judged, or a folder that is none (`kNotAFolder`), which was not announced.
  virtual void FolderJudged(const VersionFinding& finding) = 0;

 protected:
  ~DiscoveryListener() = default;
};

/// Walks `<root>/host/fxr`. A version is accepted when it begins with `prefix` and `library` stands directly in its
/// folder as a regular file. A folder that cannot be entered does not count as a version. Throws only for want of
/// memory.
Discovery DiscoverVersions(const tov::WideString& root, const tov::WideString& prefix, const tov::WideString& library,
                           DiscoveryListener& listener);

/// The same for those who only want the result.
Discovery DiscoverVersions(const tov::WideString& root, const tov::WideString& prefix, const tov::WideString& library);

/// `<root>/host/fxr`, with one "/" where the root has none at its end.
tov::WideString FxrFolder(const tov::WideString& root);

/// `<fxrFolder>/<version>/<library>`: always directly under the fxr folder, at whatever depth the version was met.
tov::WideString HostLibraryPath(const tov::WideString& fxrFolder, const tov::WideString& version,
                                const tov::WideString& library);

}  // namespace netloader
