#include "doctor/examine/frameworks.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "doctor/examine/config/json_file.h"
#include "doctor/examine/framework_version.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

using Versions = std::vector<FrameworkVersion>;

// How many parts of the version number may differ: none, the patch, the minor number, all.
enum class Range { kExact, kPatch, kMinor, kMajor };

// What decides which version is taken.
struct Wanted {
  std::string name;
  FrameworkVersion version;
  Range range;
  bool takes_highest;
  bool applies_patches;
  bool prefers_release;

  bool operator==(const Wanted&) const = default;
};

Range RangeOf(RollForward way) {
  switch (way) {
    case RollForward::kDisable:
      return Range::kExact;
    case RollForward::kLatestPatch:
      return Range::kPatch;
    case RollForward::kMinor:
    case RollForward::kLatestMinor:
      return Range::kMinor;
    case RollForward::kMajor:
    case RollForward::kLatestMajor:
      break;
  }
  return Range::kMajor;
}

bool TakesHighest(RollForward way) {
  return way == RollForward::kLatestMinor || way == RollForward::kLatestMajor;
}

RollForward WayOf(const Wanted& wanted) {
  switch (wanted.range) {
    case Range::kExact:
      return RollForward::kDisable;
    case Range::kPatch:
      return RollForward::kLatestPatch;
    case Range::kMinor:
      return wanted.takes_highest ? RollForward::kLatestMinor : RollForward::kMinor;
    case Range::kMajor:
      break;
  }
  return wanted.takes_highest ? RollForward::kLatestMajor : RollForward::kMajor;
}

bool IsInReach(const Wanted& wanted, const FrameworkVersion& higher) {
  const Range range = wanted.range;
  if (wanted.version == higher) {
    return true;
  }
  return higher > wanted.version && range != Range::kExact &&
         (wanted.version.Major() == higher.Major() || range >= Range::kMajor) &&
         (wanted.version.Minor() == higher.Minor() || range >= Range::kMinor) &&
         (wanted.version.Major() != higher.Major() || wanted.version.Minor() != higher.Minor() ||
          wanted.version.Patch() == higher.Patch() || range > Range::kPatch || wanted.applies_patches);
}

// The newest patch of the version's minor number, among those that count.
const FrameworkVersion* LatestPatch(const FrameworkVersion* best, const Versions& versions, bool onlyReleases) {
  for (const FrameworkVersion& version : versions) {
    if (version.Major() == best->Major() && version.Minor() == best->Minor() && version > *best &&
        !(onlyReleases && version.IsPrerelease())) {
      best = &version;
    }
  }
  return best;
}

// Null when none is in reach.
const FrameworkVersion* Best(const Wanted& wanted, const Versions& versions, bool onlyReleases) {
  const FrameworkVersion* best = nullptr;
  for (const FrameworkVersion& version : versions) {
    const bool counts = IsInReach(wanted, version) && !(onlyReleases && version.IsPrerelease());
    if (counts && (best == nullptr || (wanted.takes_highest ? version > *best : version < *best))) {
      best = &version;
    }
  }
  // Of pre-releases the nearest is taken.
  const bool isPatched =
      best != nullptr && !best->IsPrerelease() && wanted.applies_patches && wanted.range != Range::kExact;
  return isPatched ? LatestPatch(best, versions, onlyReleases) : best;
}

const FrameworkVersion* Chosen(const Wanted& wanted, const Versions& versions) {
  const FrameworkVersion* release = wanted.prefers_release ? Best(wanted, versions, /*onlyReleases=*/true) : nullptr;
  return release != nullptr ? release : Best(wanted, versions, /*onlyReleases=*/false);
}

// A folder counts when its name is a version and the framework's own list of files is in it.
Versions VersionsUnder(const fs::path& folder, const std::string& name) {
  Versions versions;
  std::error_code error;
  for (auto entry = fs::directory_iterator(folder, error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    const auto version = FrameworkVersion::Parse(entry->path().filename().string());
    std::error_code ignored;
    if (version && fs::exists(entry->path() / (name + ".deps.json"), ignored)) {
      versions.push_back(*version);
    }
  }
  std::ranges::sort(versions);
  return versions;
}

// Resolves by asking again from the start when a framework turns out to be needed in a newer version than was taken.
class Resolver {
 public:
  Resolver(const std::string& root, const RollForwardVariables& variables) : root_(root), variables_(variables) {}

  Frameworks Resolve(const RuntimeConfig& config) {
    do {
      found_ = {};
    } while (Read(config, /*takesHighest=*/false) == Next::kAgain);
    return found_;
  }

 private:
  enum class Next { kGoOn, kStop, kAgain };

  // What the file names counts for the frameworks on the way, before it is come to. A framework that was taken as the
  // highest one takes the highest ones itself.
  Next Read(const RuntimeConfig& config, bool takesHighest) {
    for (const FrameworkReference& reference : config.frameworks) {
      wanted_.try_emplace(reference.name, WantedBy(reference, takesHighest));
    }
    for (const FrameworkReference& reference : config.frameworks) {
      if (const Next next = Add(reference, config.file.path, takesHighest); next != Next::kGoOn) {
        return next;
      }
    }
    return Next::kGoOn;
  }

  // The host takes a text that is no version for one that is older than any.
  Wanted WantedBy(const FrameworkReference& reference, bool takesHighest) const {
    const FrameworkVersion version =
        FrameworkVersion::Parse(reference.version).value_or(*FrameworkVersion::Parse("0.0.0"));
    return {reference.name,
            version,
            RangeOf(reference.roll_forward),
            takesHighest || TakesHighest(reference.roll_forward),
            reference.applies_patches,
            !version.IsPrerelease() && !variables_.takes_prerelease};
  }

  Next Add(const FrameworkReference& reference, const std::string& namedBy, bool takesHighest) {
    Wanted& known = wanted_.at(reference.name);
    const auto wanted = Reconciled(WantedBy(reference, takesHighest), known);
    if (!wanted) {
      return Next::kStop;
    }
    const bool isNew = *wanted != known;
    known = *wanted;
    if (IsResolved(reference.name)) {
      return isNew ? Next::kAgain : Next::kGoOn;
    }
    return ResolveOne(*wanted, reference, namedBy);
  }

  bool IsResolved(const std::string& name) const {
    return std::ranges::find(found_.reports, name, &FrameworkReport::name) != found_.reports.end();
  }

  // The higher version under the narrower of both rules; empty, with the conflict kept, when the lower one does not
  // reach that far.
  std::optional<Wanted> Reconciled(const Wanted& a, const Wanted& b) {
    const Wanted& lower = a.version < b.version ? a : b;
    Wanted higher = a.version < b.version ? b : a;
    if (!IsInReach(lower, higher.version)) {
      found_.conflict = {lower.name, lower.version.Text(), higher.version.Text()};
      return std::nullopt;
    }
    higher.range = std::min(lower.range, higher.range);
    higher.takes_highest = lower.takes_highest || higher.takes_highest;
    higher.applies_patches = higher.applies_patches && lower.applies_patches;
    higher.prefers_release = higher.prefers_release || lower.prefers_release;
    return higher;
  }

  FrameworkReport& Report(const FrameworkReference& reference, const std::string& namedBy) {
    FrameworkReport report{reference.name, reference.version, reference.roll_forward, namedBy};
    if (!root_.empty()) {
      report.is_there = false;
      for (const FrameworkVersion& version : VersionsUnder(FolderOf(reference.name), reference.name)) {
        report.found.push_back(version.Text());
      }
    }
    return found_.reports.emplace_back(std::move(report));
  }

  std::string FolderOf(const std::string& name) const { return (fs::path(root_) / "shared" / name).string(); }

  Next ResolveOne(const Wanted& wanted, FrameworkReference reference, const std::string& namedBy) {
    if (FrameworkVersion::Parse(reference.version)) {
      reference.version = wanted.version.Text();
    }
    reference.roll_forward = WayOf(wanted);
    FrameworkReport& report = Report(reference, namedBy);
    if (root_.empty()) {
      return Next::kGoOn;
    }
    const Versions versions = VersionsUnder(FolderOf(wanted.name), wanted.name);
    const FrameworkVersion* chosen = Chosen(wanted, versions);
    if (chosen == nullptr) {
      return Next::kStop;
    }
    report.is_there = true;
    report.taken = chosen->Text();
    report.folder = (fs::path(FolderOf(wanted.name)) / report.taken).string();
    return ReadConfigOf(report, wanted.takes_highest);
  }

  // What the framework itself asks for.
  Next ReadConfigOf(const FrameworkReport& report, bool takesHighest) {
    const fs::path file = fs::path(report.folder) / (report.name + ".runtimeconfig.json");
    const RuntimeConfig config = ReadRuntimeConfig(file.string(), variables_);
    if (config.file.state == FileState::kMissing) {
      return Next::kGoOn;
    }
    if (config.file.state != FileState::kPresent || config.fault != ConfigFault::kNone) {
      found_.broken_config = config;
      return Next::kStop;
    }
    return Read(config, takesHighest);
  }

  const std::string& root_;
  const RollForwardVariables& variables_;
  std::map<std::string, Wanted> wanted_;
  Frameworks found_;
};

}  // namespace

Frameworks ResolveFrameworks(const RuntimeConfig& config, const std::string& root,
                             const RollForwardVariables& variables) {
  return Resolver(root, variables).Resolve(config);
}

}  // namespace doctor
