#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <set>

#include "doctor/examine/runtime_report.h"
#include "doctor/judge/findings.h"
#include "doctor/judge/near_misses/access.h"
#include "doctor/judge/near_misses/checks.h"
#include "doctor/judge/near_misses/meant_roots.h"
#include "doctor/judge/near_misses/near_misses.h"
#include "doctor/judge/warning.h"
#include "doctor/judge/words/text.h"
#include "foundation/strings.h"
#include "foundation/utf.h"
#include "netloader/netloaderhostfxr/src/version_discovery.h"
#include "netloader/utils/path_utils.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;
using netloader::FxrFolderState;

std::optional<Clue> When(bool isSo, const fs::path& place) {
  return isSo ? std::optional(AtPath(place.string())) : std::nullopt;
}

std::string FxrFolder(const RuntimeReport& runtime) {
  return ToUtf8(runtime.discovery.fxr_folder);
}

std::optional<Clue> Link(bool isSo, const fs::path& link) {
  if (!isSo) {
    return std::nullopt;
  }
  std::error_code error;
  const fs::path target = fs::canonical(link, error);
  return error ? std::nullopt : std::optional(AtPath(link.string(), {{"target_word", ShellWord(target.string())}}));
}

std::optional<Clue> RelativeRoot(const RuntimeReport& runtime) {
  return When(!netloader::utils::CheckIsValidPath(runtime.root), ToUtf8(runtime.root));
}

std::optional<Clue> RootIsFile(const RuntimeReport& runtime) {
  const std::string root = ToUtf8(runtime.root);
  std::error_code ignored;
  if (!fs::is_regular_file(root, ignored)) {
    return std::nullopt;
  }
  return AtPath(root, {{"folder", Printable(RootAround(runtime))}});
}

std::optional<Clue> RootIsFxr(const RuntimeReport& runtime) {
  const std::string root = ToUtf8(runtime.root);
  const std::string above = RootAround(runtime);
  std::error_code ignored;
  if (above.empty() || fs::is_regular_file(root, ignored)) {
    return std::nullopt;
  }
  return AtPath(root, {{"folder", Printable(above)}});
}

std::optional<Clue> TokenInRoot(const RuntimeReport& runtime) {
  return AtStringToken(ToUtf8(runtime.root));
}

std::optional<Clue> FxrFolderIsLink(const RuntimeReport& runtime) {
  return Link(runtime.discovery.state == FxrFolderState::kIsLink, FxrFolder(runtime));
}

std::optional<Clue> FxrFolderLeadsNowhere(const RuntimeReport& runtime) {
  return runtime.discovery.state == FxrFolderState::kIsLink ? AtLinkToNowhere(FxrFolder(runtime)) : std::nullopt;
}

std::optional<Clue> FxrFolderNotEntered(const RuntimeReport& runtime) {
  // One that may be listed but not entered is walked, and everything in it seems to lack what it holds.
  const bool isClosed = runtime.discovery.state == FxrFolderState::kUnreadable ||
                        (runtime.discovery.state == FxrFolderState::kWalked && !MayUse(FxrFolder(runtime), X_OK));
  return isClosed ? std::optional(AtClosed(FxrFolder(runtime))) : std::nullopt;
}

// A folder above that cannot be searched hides all that is in it.
std::optional<Clue> FolderAboveNotEntered(const RuntimeReport& runtime) {
  if (runtime.discovery.state != FxrFolderState::kNoStatus) {
    return std::nullopt;
  }
  return ClosedFolderAbove(FxrFolder(runtime));
}

// What tells mounts apart: the same file system may be mounted in several places, each with its own flags. Kernels
// before 5.8 have no number for it.
std::uint64_t MountNumber(const fs::path& folder) {
  struct statx status {};
  // C libraries before 2.28 have no function for it.
  if (::syscall(SYS_statx, AT_FDCWD, folder.c_str(), 0, STATX_MNT_ID, &status) != 0) {
    return 0;
  }
  return (status.stx_mask & STATX_MNT_ID) != 0 ? status.stx_mnt_id
                                               : ::makedev(status.stx_dev_major, status.stx_dev_minor);
}

// The folder where the file system of a folder is mounted.
std::string MountOf(fs::path folder) {
  const std::uint64_t number = MountNumber(folder);
  while (folder != folder.root_path() && MountNumber(folder.parent_path()) == number) {
    folder = folder.parent_path();
  }
  return folder.string();
}

std::optional<Clue> Noexec(const RuntimeReport& runtime) {
  struct statvfs system {};
  const std::string folder = FxrFolder(runtime);
  if (::statvfs(folder.c_str(), &system) != 0 || (system.f_flag & ST_NOEXEC) == 0) {
    return std::nullopt;
  }
  const std::string mount = MountOf(folder);
  return AtPath(folder, {{"mount", Printable(mount)}, {"mount_word", ShellWord(mount)}});
}

// What the root and its host/fxr folder are looked at for.
constexpr auto kRootChecks = std::to_array<Check<RuntimeReport>>({
    {Finding::kRelativeRoot, RelativeRoot},
    {Finding::kRootIsFile, RootIsFile},
    {Finding::kRootIsFxr, RootIsFxr},
    {Finding::kStringTokenInPath, TokenInRoot},
    {Finding::kFolderIsLink, FxrFolderIsLink},
    {Finding::kLinkToNowhere, FxrFolderLeadsNowhere},
    {Finding::kFolderNotEntered, FxrFolderNotEntered},
    {Finding::kFolderNotEntered, FolderAboveNotEntered},
    {Finding::kNoexec, Noexec},
});

std::optional<Clue> EntryIsLink(const fs::path& entry) {
  std::error_code ignored;
  return Link(fs::is_symlink(entry, ignored) && fs::is_directory(entry, ignored), entry);
}

std::optional<Clue> EntryNotEntered(const fs::path& entry) {
  std::error_code ignored;
  const bool isFolder = !fs::is_symlink(entry, ignored) && fs::is_directory(entry, ignored);
  return isFolder && !MayUse(entry, R_OK | X_OK) ? std::optional(AtClosed(entry)) : std::nullopt;
}

// What each entry of host/fxr is looked at for: the walk enters neither links nor closed folders, and is silent there.
constexpr auto kEntryChecks = std::to_array<Check<fs::path>>({
    {Finding::kFolderIsLink, EntryIsLink},
    {Finding::kFolderNotEntered, EntryNotEntered},
});

// In an order that is always the same.
std::set<fs::path> EntriesOf(const std::string& folder) {
  std::set<fs::path> entries;
  std::error_code error;
  for (auto entry = fs::directory_iterator(folder, error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    entries.insert(entry->path());
  }
  return entries;
}

}  // namespace

Warnings RuntimeNearMisses(const RuntimeReport& report) {
  Warnings warnings;
  Apply(kRootChecks, report, warnings);
  for (const fs::path& entry : EntriesOf(FxrFolder(report))) {
    Apply(kEntryChecks, entry, warnings);
  }
  std::ranges::move(VersionNearMisses(report), std::back_inserter(warnings));
  return warnings;
}

}  // namespace doctor
