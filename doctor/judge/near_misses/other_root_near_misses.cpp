#include "doctor/judge/near_misses/other_root_near_misses.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include "doctor/judge/findings.h"
#include "doctor/judge/near_misses/checks.h"
#include "doctor/judge/near_misses/settings_line.h"
#include "doctor/judge/stop.h"
#include "doctor/judge/words/named.h"
#include "doctor/judge/words/text.h"
#include "foundation/strings.h"
#include "foundation/utf.h"
#include "netloader/netloaderquorcommon/src/settings_keys.h"

namespace doctor {
namespace {

// Where one of these explains the end, the root is the right one, or the file is not.
constexpr auto kMendedInPlace = std::to_array<Finding>({
    Finding::kSettingsAreFolder,
    Finding::kSettingsHaveExtension,
    Finding::kSettingsFolderNoFolder,
    Finding::kSettingsLinkBroken,
    Finding::kSettingsNotAFile,
    Finding::kSettingsAreUtf16,
    Finding::kFolderIsLink,
    Finding::kLibraryIsLink,
    Finding::kFolderNotEntered,
    Finding::kFileNotRead,
    Finding::kNoexec,
    Finding::kNeededLibrary,
    Finding::kTooFewFiles,
});

bool IsMendedInPlace(const RootSearch& search) {
  return std::ranges::any_of(search.warnings, [&](const Warning& warning) {
    return warning.may_decide && Contains(RowOf(kFindings, warning.finding).explains, search.verdict.stop) &&
           std::ranges::find(kMendedInPlace, warning.finding) != kMendedInPlace.end();
  });
}

const OtherRoot* Find(const RootSearch& search, bool (*isSo)(const OtherRoot& root)) {
  const auto found = std::ranges::find_if(search.roots, isSo);
  return found != search.roots.end() ? &*found : nullptr;
}

// The command that makes a launch take this root.
std::string CommandFor(const std::string& root, const SettingsReport& settings) {
  const std::string key = ToUtf8(NameOf(netloader::quor::detail::SettingsKey::kDotnetRootFolder));
  const bool isNamed = std::ranges::any_of(
      settings.entries, [&](const SettingsEntry& entry) { return entry.use == LineUse::kUsed && entry.key == key; });
  const std::string file = ShellWord(settings.path);
  const std::filesystem::path folder = std::filesystem::path(settings.path).parent_path();
  std::error_code ignored;
  const std::string make = folder.empty() || std::filesystem::exists(folder, ignored)
                               ? ""
                               : "mkdir -p " + ShellWord(folder.string()) + " && ";
  return isNamed ? "sed -i " + ShellWord("s|^" + key + "=.*|" + key + "=" + SedReplacement(root) + "|") + " " + file
                 : make + "printf '\\n" + key + "=%s\\n' " + ShellWord(root) + " >> " + file;
}

// A part of an installation that lacks the other part.
struct Halves {
  std::string host;
  std::string framework;
};

bool IsLoneHost(const OtherRoot& root) {
  return !root.version.empty() && !root.has_framework;
}

std::optional<Halves> HalvesOf(const RootSearch& search) {
  if (search.runtime == nullptr) {
    return std::nullopt;
  }
  const std::string root = ToUtf8(search.runtime->root);
  const bool hasHost = search.runtime->Decisive() != nullptr;
  if (hasHost == HasFramework(root)) {
    return std::nullopt;
  }
  const OtherRoot* other =
      hasHost ? Find(search, [](const OtherRoot& each) { return each.has_framework; }) : Find(search, IsLoneHost);
  if (other == nullptr) {
    return std::nullopt;
  }
  return hasHost ? Halves{root, other->place.folder} : Halves{other->place.folder, root};
}

std::optional<Clue> TwoFeeds(const RootSearch& search) {
  const auto halves = HalvesOf(search);
  if (!halves) {
    return std::nullopt;
  }
  const OtherRoot* whole = Find(search, IsUsable);
  const std::string command = whole != nullptr ? CommandFor(whole->place.folder, search.settings)
                                               : "remove the .NET packages of both feeds (apt-get remove 'dotnet*' "
                                                 "'aspnetcore*' 'netstandard*', or dnf), and install "
                                                 "dotnet-runtime-6.0 from one of them";
  return AtPath(
      ToUtf8(search.runtime->root),
      {{"host_root", Printable(halves->host)}, {"framework_root", Printable(halves->framework)}, {"command", command}});
}

std::optional<Clue> RuntimeElsewhere(const RootSearch& search) {
  const OtherRoot* other = Find(search, IsUsable);
  if (other == nullptr || other->place.is_meant || search.verdict.stop == Stop::kContext || IsMendedInPlace(search)) {
    return std::nullopt;
  }
  return Clue{Printable(search.settings.path),
              {{"problem", search.verdict.cause.text},
               {"version", Printable(other->version)},
               {"root", Printable(other->place.folder)},
               {"would", other->state == RootState::kServes ? "would do" : "looks sound"},
               {"command", CommandFor(other->place.folder, search.settings)}}};
}

// What the other roots are looked at for; the first one says enough.
constexpr auto kRootChecks = std::to_array<Check<RootSearch>>({
    {Finding::kTwoFeeds, TwoFeeds},
    {Finding::kRuntimeElsewhere, RuntimeElsewhere},
});

}  // namespace

bool WantsOtherRoot(const Verdict& verdict, const RuntimeReport* runtime) {
  switch (verdict.stop) {
    case Stop::kSettings:
      return verdict.cause.finding == Finding::kSettingsMissing;
    case Stop::kNoRoot:
    case Stop::kFolder:
    case Stop::kNoVersion:
    case Stop::kNoneLoads:
      return true;
    case Stop::kContext:
      return runtime != nullptr && !HasFramework(ToUtf8(runtime->root));
    default:
      return false;
  }
}

Warnings OtherRootNearMisses(const RootSearch& search) {
  Warnings warnings = Noticed(kRootChecks, search);
  warnings.resize(std::min<std::size_t>(warnings.size(), 1));
  return warnings;
}

}  // namespace doctor
