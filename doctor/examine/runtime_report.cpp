#include "doctor/examine/runtime_report.h"

#include <algorithm>
#include <exception>
#include <set>
#include <utility>

#include "doctor/child/signal_name.h"
#include "doctor/examine/text.h"
#include "foundation/result_code.h"
#include "netloader/netloaderhostfxr/src/loadermodule.h"
#include "netloader/netloaderhostfxr/src/version_order.h"
#include "netloader/netloaderquorcommon/src/settings_constants.h"
#include "netloader/utils/path_utils.h"

namespace doctor {
namespace {

using netloader::ElfVerdict;
using netloader::VersionFinding;
using netloader::VersionVerdict;

struct Reason {
  std::string code;
  std::string detail;
};

Reason ReasonOf(const VersionFinding& finding) {
  switch (finding.verdict) {
    case VersionVerdict::kAccepted:
      break;
    case VersionVerdict::kNotAFolder:
      return finding.name.empty() ? Reason{"not-utf8", "names that are not UTF-8 are passed over"}
                                  : Reason{"not-a-folder", "is no folder any more"};
    case VersionVerdict::kWrongPrefix:
      return {"wrong-prefix", "its name does not begin with " + Quoted(ToUtf8(netloader::quor::kDotnetVersionPrefix))};
    case VersionVerdict::kNoLibrary:
      return {"no-library",
              ToUtf8(netloader::kHostFxrFileName) + ": " + std::string(tov::ResultCodeMessage(finding.result))};
    case VersionVerdict::kLibraryIsLink:
      return {"library-is-link", ToUtf8(netloader::kHostFxrFileName) + " is a symbolic link"};
    case VersionVerdict::kLibraryIsNoFile:
      return {"library-is-no-file", ToUtf8(netloader::kHostFxrFileName) + " is no regular file"};
  }
  return {};
}

std::string ReasonCode(ElfVerdict verdict) {
  switch (verdict) {
    case ElfVerdict::kLoadable:
      break;
    case ElfVerdict::kUnreadable:
      return "unreadable";
    case ElfVerdict::kNotElf:
      return "not-elf";
    case ElfVerdict::kOtherMachine:
      return "other-machine";
    case ElfVerdict::kNotShared:
      return "not-shared";
    case ElfVerdict::kCutShort:
      return "cut-short";
    case ElfVerdict::kMalformed:
      return "malformed";
  }
  return {};
}

// What a library wrote before the end, as far as it helps.
std::string LastWords(const ChildResult& child) {
  constexpr std::size_t kLongest = 200;
  std::string words = child.output.substr(0, kLongest);
  words.erase(words.find_last_not_of(" \r\n") + 1);
  return words.empty() ? words : "; it wrote: " + words;
}

// What a probe says of a library: good, refused or fatal.
void Judge(LibraryProbe probe, VersionReport& version) {
  version.standing = Standing::kFatal;
  switch (probe.child.end) {
    case ChildEnd::kFinished:
      version.standing = probe.IsGood() ? Standing::kGood : Standing::kRefused;
      if (!probe.IsGood()) {
        version.reason = probe.missing.empty() ? "load-failed" : "function-missing";
        version.detail = probe.missing.empty() ? probe.error : "lacks the function " + probe.missing;
      }
      break;
    case ChildEnd::kThrew:
    case ChildEnd::kThrewUnknown:
      version.reason = "threw";
      version.detail = "threw an exception while loading" +
                       (probe.child.message.empty() ? std::string() : ": " + probe.child.message);
      break;
    case ChildEnd::kExited:
      version.reason = "exited";
      version.detail =
          "ended the process while loading, with status " + std::to_string(probe.child.code) + LastWords(probe.child);
      break;
    case ChildEnd::kCrashed:
      version.reason = "crashed";
      version.detail = "crashed while loading: " + SignalName(probe.child.code) + LastWords(probe.child);
      break;
    case ChildEnd::kTimedOut:
      version.reason = "timed-out";
      version.detail = "did not come back from loading within the time limit" + LastWords(probe.child);
      break;
    case ChildEnd::kNotStarted:
      throw std::system_error(probe.child.code, std::generic_category(), "a process to load libraries in");
  }
  version.child = std::move(probe.child);
}

void Try(VersionReport& version, const LibraryProber& prober) {
  if (!netloader::utils::CheckIsValidPath(version.library)) {
    version.reason = "relative-path";
    version.detail = "its path is relative, and only absolute ones are loaded";
    return;
  }
  if (auto elf = netloader::CheckElf(ToUtf8(version.library).c_str()); elf.verdict != ElfVerdict::kLoadable) {
    version.reason = ReasonCode(elf.verdict);
    version.detail = std::move(elf.detail);
  } else if (prober) {
    Judge(prober(version.library), version);
  } else {
    version.standing = Standing::kNotLoaded;
  }
}

class Examiner {
 public:
  Examiner(RuntimeReport& report, const LibraryProber& prober) : report_(report), prober_(prober) {}

  void Examine() {
    for (const tov::WideString& name : Ordered()) {
      AddCandidate(name);
    }
    const std::size_t candidates = report_.versions.size();
    for (const VersionFinding& finding : report_.discovery.findings) {
      AddOther(finding);
    }
    std::sort(report_.versions.begin() + static_cast<std::ptrdiff_t>(candidates), report_.versions.end(),
              [](const auto& a, const auto& b) { return a.name < b.name; });
  }

 private:
  std::vector<tov::WideString> Ordered() {
    try {
      return netloader::NewestFirst(report_.discovery.Accepted(), netloader::quor::kDotnetVersionPrefix);
    } catch (const std::bad_cast& failure) {
      report_.failure = failure.what();
      return {};
    }
  }

  VersionReport Report(const tov::WideString& name) const {
    VersionReport version;
    version.name = ToUtf8(name);
    version.library = netloader::HostLibraryPath(report_.discovery.fxrFolder, name, netloader::kHostFxrFileName);
    return version;
  }

  // A launch may meet a folder twice; what it is need be told once.
  bool IsNew(const tov::WideString& name) { return seen_.insert(name).second; }

  void AddCandidate(const tov::WideString& name) {
    if (!IsNew(name)) {
      return;
    }
    VersionReport version = Report(name);
    version.is_candidate = true;
    Try(version, prober_);
    if (!report_.decisive && version.standing != Standing::kRefused) {
      report_.decisive = report_.versions.size();
      version.standing = version.standing == Standing::kGood ? Standing::kChosen : version.standing;
    }
    report_.versions.push_back(std::move(version));
  }

  void AddOther(const VersionFinding& finding) {
    if ((finding.verdict == VersionVerdict::kAccepted && report_.failure.empty()) || !IsNew(finding.name)) {
      return;
    }
    VersionReport version = Report(finding.name);
    Reason reason = ReasonOf(finding);
    version.reason = std::move(reason.code);
    version.detail = std::move(reason.detail);
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
