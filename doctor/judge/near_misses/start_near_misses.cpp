#include <filesystem>

#include "doctor/examine/broken_file.h"
#include "doctor/examine/start_probe.h"
#include "doctor/examine/start_report.h"
#include "doctor/judge/findings.h"
#include "doctor/judge/near_misses/checks.h"
#include "doctor/judge/near_misses/near_misses.h"
#include "doctor/judge/warning.h"
#include "doctor/judge/words/text.h"

namespace doctor {
namespace {

std::optional<Clue> BrokenForLater(const BrokenFile& file) {
  const std::string folder = std::filesystem::path(file.path).parent_path().filename();
  return Clue{Printable(file.path), {{"detail", Printable(file.detail)}, {"folder", Printable(folder)}}};
}

// What each broken file is looked at for.
constexpr auto kFileChecks = std::to_array<Check<BrokenFile>>({
    {Finding::kBrokenFile, BrokenForLater},
});

}  // namespace

Warnings StartNearMisses(const StartReport& report) {
  Warnings warnings;
  for (const BrokenFile& file : report.broken) {
    // What starting takes is said where the start fails.
    if (&file != report.Decisive() && (file.need != Need::kStart || report.probe.HasStarted())) {
      Apply(kFileChecks, file, warnings);
    }
  }
  return warnings;
}

}  // namespace doctor
