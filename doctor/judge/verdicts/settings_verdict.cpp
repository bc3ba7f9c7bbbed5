#include "doctor/judge/verdicts/settings_verdict.h"

#include <unistd.h>

#include <filesystem>

#include "doctor/judge/findings.h"
#include "doctor/judge/near_misses/access.h"
#include "doctor/judge/near_misses/checks.h"
#include "doctor/judge/stop.h"
#include "doctor/judge/verdicts/endings.h"
#include "doctor/judge/words/message.h"
#include "doctor/judge/words/text.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

Clue AtSettings(const SettingsReport& settings, Values values = {}) {
  Clue clue = AtPath(settings.path, std::move(values));
  clue.values.emplace("file_word", ShellWord(settings.path));
  clue.values.emplace("new_word", ShellWord(settings.path + ".new"));
  return clue;
}

// Rights can be given; what else keeps a file from being read, such as a broken disk, is told by the kernel.
std::string CommandToRead(const std::string& file) {
  return MayUse(file, R_OK) ? "write the file again, and see what the kernel says of its disk (dmesg)"
                            : CommandToPermit(file, "r");
}

Verdict CannotOpen(const SettingsReport& settings) {
  std::error_code ignored;
  const bool isThere = fs::exists(settings.path, ignored) || ignored;
  return Aborts(Stop::kSettings, isThere ? Finding::kSettingsUnreadable : Finding::kSettingsMissing,
                AtSettings(settings, {{"reason", settings.reason}, {"command", CommandToRead(settings.path)}}),
                settings.failure);
}

}  // namespace

std::optional<Verdict> JudgeSettings(const SettingsReport& settings) {
  switch (settings.end) {
    case SettingsEnd::kUnreadable:
      return CannotOpen(settings);
    case SettingsEnd::kNeverEnds:
      return Verdict{Outcome::kHangs, Stop::kSettings, Worded(Finding::kSettingsNeverEnd, AtSettings(settings))};
    case SettingsEnd::kMalformed:
      return Aborts(Stop::kText, Finding::kSettingsNotUtf8,
                    AtSettings(settings, {{"line", std::to_string(settings.entries.back().line)}}), settings.failure);
    case SettingsEnd::kNoRoot:
      return Refuses(Stop::kNoRoot, Finding::kNoRoot, AtSettings(settings));
    case SettingsEnd::kNoProductFolder:
      return Aborts(Stop::kProduct, Finding::kExecutableFolderUnknown, {"/proc/self/exe"}, settings.folder_failure);
    case SettingsEnd::kComplete:
      break;
  }
  return std::nullopt;
}

}  // namespace doctor
