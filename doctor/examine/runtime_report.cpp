#include "doctor/examine/runtime_report.h"

#include <algorithm>
#include <set>
#include <system_error>
#include <utility>

#include "foundation/utf.h"
#include "netloader/netloaderhostfxr/src/elf_check.h"
#include "netloader/netloaderhostfxr/src/library_check.h"
#include "netloader/netloaderhostfxr/src/version_order.h"
#include "netloader/netloaderquorcommon/src/settings_constants.h"
#include "netloader/utils/path_utils.h"

namespace doctor {
namespace {

using netloader::ElfVerdict;
using netloader::VersionFinding;
using netloader::VersionVerdict;

// Why the walk passed a folder over; empty for one that it accepted.
std::optional<VersionReason> ReasonOf(const VersionFinding& finding) {
  switch (finding.verdict) {
    case VersionVerdict::kAccepted:
      break;
    case VersionVerdict::kNotAFolder:
      return finding.name.empty() ? VersionReason::kNotUtf8 : VersionReason::kNotAFolder;
    case VersionVerdict::kWrongPrefix:
      return VersionReason::kWrongPrefix;
    case VersionVerdict::kNoLibrary:
      return VersionReason::kNoLibrary;
    case VersionVerdict::kLibraryIsLink:
      return VersionReason::kLibraryIsLink;
    case VersionVerdict::kLibraryIsNoFile:
      return VersionReason::kLibraryIsNoFile;
  }
  return std::nullopt;
}

std::optional<VersionReason> ReasonOf(ElfVerdict verdict) {
  switch (verdict) {
    case ElfVerdict::kLoadable:
      break;
    case ElfVerdict::kUnreadable:
      return VersionReason::kUnreadable;
    case ElfVerdict::kNotElf:
      return VersionReason::kNotElf;
    case ElfVerdict::kOtherMachine:
      return VersionReason::kOtherMachine;
    case ElfVerdict::kNotShared:
      return VersionReason::kNotShared;
    case ElfVerdict::kCutShort:
      return VersionReason::kCutShort;
    case ElfVerdict::kMalformed:
      return VersionReason::kMalformed;
  }
  return std::nullopt;
}

// What loading it shows; empty for a good library.
std::optional<VersionReason> ReasonOf(const LibraryProbe& probe) {
  switch (probe.child.end) {
    case ChildEnd::kFinished:
      break;
    case ChildEnd::kThrew:
    case ChildEnd::kThrewUnknown:
      return VersionReason::kThrew;
    case ChildEnd::kExited:
      return VersionReason::kExited;
    case ChildEnd::kCrashed:
      return VersionReason::kCrashed;
    case ChildEnd::kTimedOut:
      return VersionReason::kTimedOut;
    case ChildEnd::kNotStarted:
      throw std::system_error(probe.child.code, std::generic_category(), "a process to load libraries in");
  }
  if (probe.IsGood()) {
    return std::nullopt;
  }
  return probe.missing.empty() ? VersionReason::kLoadFailed : VersionReason::kFunctionMissing;
}

Standing StandingOf(const LibraryProbe& probe) {
  if (probe.child.end == ChildEnd::kFinished) {
    return probe.IsGood() ? Standing::kChosen : Standing::kRefused;
  }
  return probe.child.end == ChildEnd::kTimedOut ? Standing::kNotKnown : Standing::kFatal;
}

void Take(LibraryProbe probe, VersionReport& version) {
  version.reason = ReasonOf(probe);
  version.standing = StandingOf(probe);
  version.words = std::move(probe.error);
  version.missing_function = std::move(probe.missing);
  version.child = std::move(probe.child);
}

void Try(VersionReport& version, const LibraryProber& prober) {
  if (!netloader::utils::CheckIsValidPath(version.library)) {
    version.reason = VersionReason::kRelativePath;
    return;
  }
  auto found = netloader::CheckLibrary(tov::text::ToUtf8(version.library));
  version.reason = found.has_string_token ? VersionReason::kStringToken : ReasonOf(found.elf);
  version.words = std::move(found.detail);
  if (version.reason) {
    return;
  }
  if (prober) {
    Take(prober(version.library), version);
  } else {
    version.standing = Standing::kNotLoaded;
  }
}

class Examiner {
 public:
  Examiner(RuntimeReport& report, const LibraryProber& prober) : report_(report), prober_(prober) {}

  void Examine() {
    TryCandidates();
    const std::size_t candidates = report_.versions.size();
    for (const VersionFinding& finding : report_.discovery.findings) {
      AddOther(finding);
    }
    std::sort(report_.versions.begin() + static_cast<std::ptrdiff_t>(candidates), report_.versions.end(),
              [](const auto& a, const auto& b) { return a.name < b.name; });
  }

 private:
  // Every candidate is reported, also those that a launch would not come to; so none is taken.
  void TryCandidates() {
    const auto attempt = [this](const tov::WideString& name, const tov::WideString& /*library*/) {
      AddCandidate(name);
      return false;
    };
    try {
      netloader::TryNewestFirst(report_.discovery, netloader::quor::kDotnetVersionPrefix, netloader::kHostFxrFileName,
                                attempt);
    } catch (const std::bad_cast& failure) {
      report_.failure = failure.what();
    }
  }

  VersionReport Report(const tov::WideString& name) const {
    VersionReport version;
    version.name = tov::text::ToUtf8(name);
    version.library = netloader::HostLibraryPath(report_.discovery.fxr_folder, name, netloader::kHostFxrFileName);
    return version;
  }

  // A launch may meet a folder twice; one report of it is enough.
  bool IsNew(const tov::WideString& name) { return seen_.insert(name).second; }

  void AddCandidate(const tov::WideString& name) {
    if (!IsNew(name)) {
      return;
    }
    VersionReport version = Report(name);
    version.is_candidate = true;
    // What a launch would not load is not loaded: whatever it does, it would do it here only.
    Try(version, report_.decisive ? LibraryProber() : prober_);
    if (!report_.decisive && version.standing != Standing::kRefused) {
      report_.decisive = report_.versions.size();
    }
    report_.versions.push_back(std::move(version));
  }

  void AddOther(const VersionFinding& finding) {
    if ((finding.verdict == VersionVerdict::kAccepted && report_.failure.empty()) || !IsNew(finding.name)) {
      return;
    }
    VersionReport version = Report(finding.name);
    version.reason = ReasonOf(finding);
    version.result = finding.result;
    report_.versions.push_back(std::move(version));
  }

  RuntimeReport& report_;
  const LibraryProber& prober_;
  std::set<tov::WideString> seen_;
};

}  // namespace

RuntimeReport ExamineRuntime(const tov::WideString& root, const LibraryProber& prober) {
  RuntimeReport report;
  report.root = root;
  report.discovery =
      netloader::DiscoverVersions(root, netloader::quor::kDotnetVersionPrefix, netloader::kHostFxrFileName);
  Examiner(report, prober).Examine();
  return report;
}

}  // namespace doctor
