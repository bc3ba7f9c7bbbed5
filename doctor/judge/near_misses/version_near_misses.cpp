#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <exception>
#include <filesystem>
#include <map>
#include <string_view>
#include <vector>

#include "doctor/examine/runtime_report.h"
#include "doctor/judge/findings.h"
#include "doctor/judge/near_misses/access.h"
#include "doctor/judge/near_misses/checks.h"
#include "doctor/judge/near_misses/near_misses.h"
#include "doctor/judge/warning.h"
#include "doctor/judge/words/message.h"
#include "doctor/judge/words/text.h"
#include "foundation/strings.h"
#include "foundation/utf.h"
#include "netloader/netloaderhostfxr/src/string_token.h"
#include "netloader/netloaderhostfxr/src/version_discovery.h"
#include "netloader/netloaderhostfxr/src/version_order.h"
#include "netloader/netloaderquorcommon/src/settings_constants.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

const tov::WideString& Prefix() {
  return netloader::quor::kDotnetVersionPrefix;
}

std::optional<Clue> AboutLibrary(const VersionReport& version, bool isSo, Values values = {}) {
  values.emplace("version", Printable(version.name));
  return isSo ? std::optional(AtPath(ToUtf8(version.library), std::move(values))) : std::nullopt;
}

std::optional<Clue> LibraryIsLink(const VersionReport& version) {
  std::error_code error;
  const fs::path target = fs::canonical(ToUtf8(version.library), error);
  return AboutLibrary(version, version.reason == VersionReason::kLibraryIsLink && !error,
                      {{"target_word", ShellWord(target.string())}});
}

std::optional<Clue> LibraryLeadsNowhere(const VersionReport& version) {
  return version.reason == VersionReason::kLibraryIsLink ? AtLinkToNowhere(ToUtf8(version.library)) : std::nullopt;
}

// What the dynamic loader did not find, taken from its words: a library by its plain name, or a version of one.
struct Needed {
  std::string what;
  std::string advice;
};

std::optional<Needed> NeededBy(std::string_view words) {
  constexpr std::string_view kNoFile = ": cannot open shared object file: No such file or directory";
  constexpr std::string_view kVersion = "version `";
  if (words.ends_with(kNoFile) && words.find('/') == std::string_view::npos) {
    const std::string name(words.substr(0, words.size() - kNoFile.size()));
    return Needed{name, "install the package of this system that has " + name};
  }
  const auto begin = words.find(kVersion);
  const auto end = words.find("' not found", begin);
  if (begin == std::string_view::npos || end == std::string_view::npos) {
    return std::nullopt;
  }
  const std::string name(words.substr(begin + kVersion.size(), end - begin - kVersion.size()));
  return Needed{name, "install a .NET runtime that is made for this system, or a newer system"};
}

std::optional<Clue> NeededLibrary(const VersionReport& version) {
  const auto needed = version.reason == VersionReason::kLoadFailed ? NeededBy(version.words) : std::nullopt;
  return needed ? AboutLibrary(version, true,
                               {{"needed", Printable(needed->what)},
                                {"said", Printable(version.words)},
                                {"advice", Printable(needed->advice)}})
                : std::nullopt;
}

// The root's is reported once, for all versions.
std::optional<Clue> TokenInName(const VersionReport& version) {
  return netloader::FindStringToken(version.name).empty() ? std::nullopt : AtStringToken(ToUtf8(version.library));
}

std::optional<Clue> FileNotRead(const VersionReport& version) {
  const std::string library = ToUtf8(version.library);
  const bool isClosed = version.reason == VersionReason::kUnreadable && !MayUse(library, R_OK) && errno == EACCES;
  return isClosed ? std::optional(AtClosed(library)) : std::nullopt;
}

std::optional<Clue> OtherMachine(const VersionReport& version) {
  return AboutLibrary(version, version.reason == VersionReason::kOtherMachine);
}

std::optional<Clue> CutShort(const VersionReport& version) {
  return AboutLibrary(version, version.reason == VersionReason::kCutShort, {{"words", version.words}});
}

bool IsDigit(char letter) {
  return std::isdigit(static_cast<unsigned char>(letter)) != 0;
}

// Digits and dots, with a suffix such as "-preview.1" or without: what a runtime's folder is called.
bool IsVersionName(std::string_view name) {
  return !name.empty() && IsDigit(name.front()) && name.find('.') != std::string_view::npos;
}

bool IsOtherRuntime(const VersionReport& version) {
  std::error_code ignored;
  return version.reason == VersionReason::kWrongPrefix && IsVersionName(version.name) &&
         fs::is_regular_file(ToUtf8(version.library), ignored);
}

// "6.0.1, 7.0.20 and 8.0.11"
std::string Enumerated(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t at = 0; at < names.size(); ++at) {
    text += (at == 0 ? "" : at + 1 == names.size() ? " and " : ", ") + names[at];
  }
  return text;
}

std::optional<Clue> OtherRuntime(const RuntimeReport& runtime) {
  std::vector<std::string> versions;
  for (const VersionReport& version : runtime.versions) {
    if (IsOtherRuntime(version)) {
      versions.push_back(Printable(version.name));
    }
  }
  if (versions.empty() || std::ranges::any_of(runtime.versions, &VersionReport::is_candidate)) {
    return std::nullopt;
  }
  return AtPath(ToUtf8(runtime.discovery.fxr_folder),
                {{"root", Printable(ToUtf8(runtime.root))}, {"versions", Enumerated(versions)}});
}

// What all versions together are looked at for.
constexpr auto kVersionsChecks = std::to_array<Check<RuntimeReport>>({
    {Finding::kOtherRuntime, OtherRuntime},
});

// What each version folder's library is looked at for.
constexpr auto kLibraryChecks = std::to_array<Check<VersionReport>>({
    {Finding::kLibraryIsLink, LibraryIsLink},
    {Finding::kLinkToNowhere, LibraryLeadsNowhere},
    {Finding::kNeededLibrary, NeededLibrary},
    {Finding::kStringTokenInPath, TokenInName},
    {Finding::kFileNotRead, FileNotRead},
    {Finding::kOtherMachine, OtherMachine},
    {Finding::kCutShort, CutShort},
});

std::string_view Tail(const VersionReport& version) {
  return std::string_view(version.name).substr(Prefix().size());
}

// A candidate with the number that a launch orders it by.
struct Numbered {
  const VersionReport& version;
  long number;
  const VersionReport* equal = nullptr;  // An earlier one with the same number.
};

bool IsHexadecimal(std::string_view tail) {
  return tail.starts_with("0x") || tail.starts_with("0X");
}

bool IsOctal(std::string_view tail) {
  return tail.size() > 1 && tail[0] == '0' && IsDigit(tail[1]);
}

std::optional<Clue> AboutNumber(const Numbered& numbered, bool isSo) {
  return AboutLibrary(numbered.version, isSo,
                      {{"tail", Quoted(Tail(numbered.version))}, {"number", std::to_string(numbered.number)}});
}

std::optional<Clue> HexadecimalNumber(const Numbered& numbered) {
  return AboutNumber(numbered, IsHexadecimal(Tail(numbered.version)));
}

std::optional<Clue> OctalNumber(const Numbered& numbered) {
  return AboutNumber(numbered, IsOctal(Tail(numbered.version)));
}

std::optional<Clue> NoNumber(const Numbered& numbered) {
  return AboutNumber(numbered, numbered.number == 0 && !Tail(numbered.version).starts_with('0'));
}

std::optional<Clue> EqualNumbers(const Numbered& numbered) {
  if (numbered.equal == nullptr) {
    return std::nullopt;
  }
  return AboutLibrary(numbered.version, true,
                      {{"first", Printable(numbered.version.name)},
                       {"second", Printable(numbered.equal->name)},
                       {"number", std::to_string(numbered.number)}});
}

// What each candidate's number is looked at for.
constexpr auto kNumberChecks = std::to_array<Check<Numbered>>({
    {Finding::kHexadecimalNumber, HexadecimalNumber},
    {Finding::kOctalNumber, OctalNumber},
    {Finding::kNoNumber, NoNumber},
    {Finding::kEqualNumbers, EqualNumbers},
});

// Nothing for a name with a lone surrogate, which a launch reads only when there is another to compare it with.
std::optional<long> Number(const VersionReport& version) {
  try {
    return netloader::VersionNumber(ToUtf16(version.name), Prefix());
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

std::vector<Numbered> NumberedCandidates(const RuntimeReport& runtime) {
  std::vector<Numbered> candidates;
  std::map<long, const VersionReport*> first;
  for (const VersionReport& version : runtime.versions) {
    if (const auto number = version.is_candidate ? Number(version) : std::nullopt) {
      const auto [earlier, isNew] = first.emplace(*number, &version);
      candidates.push_back({version, *number, isNew ? nullptr : earlier->second});
    }
  }
  return candidates;
}

// Two candidates, one tried right after the other.
struct Neighbours {
  const VersionReport& first;
  const VersionReport& second;
  const tov::WideString& folder;
};

// The number that a person reads in a version's last part, the largest there is for one that is too long; none when
// there is more than digits.
std::optional<unsigned long long> PlainNumber(std::string_view tail) {
  if (tail.empty() || !std::ranges::all_of(tail, IsDigit)) {
    return std::nullopt;
  }
  unsigned long long number = 0;
  const auto [end, error] = std::from_chars(tail.data(), tail.data() + tail.size(), number);
  return error == std::errc::result_out_of_range ? ~0ULL : number;
}

std::optional<Clue> OddOrder(const Neighbours& neighbours) {
  const auto first = PlainNumber(Tail(neighbours.first));
  const auto second = PlainNumber(Tail(neighbours.second));
  if (!first || !second || *first >= *second) {
    return std::nullopt;
  }
  return Clue{Printable(ToUtf8(neighbours.folder)),
              {{"first", Printable(neighbours.first.name)}, {"second", Printable(neighbours.second.name)}}};
}

// What each pair of candidates that follow each other is looked at for.
constexpr auto kNeighbourChecks = std::to_array<Check<Neighbours>>({
    {Finding::kOddOrder, OddOrder},
});

}  // namespace

Warnings VersionNearMisses(const RuntimeReport& report) {
  Warnings warnings;
  for (const VersionReport& version : report.versions) {
    Apply(kLibraryChecks, version, warnings);
  }
  Apply(kVersionsChecks, report, warnings);
  for (const Numbered& candidate : NumberedCandidates(report)) {
    Apply(kNumberChecks, candidate, warnings);
  }
  const VersionReport* earlier = nullptr;
  for (const VersionReport& version : report.versions) {
    if (version.is_candidate && earlier != nullptr) {
      Apply(kNeighbourChecks, Neighbours{*earlier, version, report.discovery.fxr_folder}, warnings);
    }
    earlier = version.is_candidate ? &version : earlier;
  }
  return warnings;
}

}  // namespace doctor
