// What the settings file says, line by line.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "foundation/strings.h"

namespace doctor {

enum class LineUse {
  kUsed,       ///< The launcher reads it.
  kUnused,     ///< It sets a key that nobody reads.
  kReplaced,   ///< A later line sets the same key.
  kSkipped,    ///< It sets nothing.
  kMalformed,  ///< It is not UTF-8: the load ends here.
};

/// Key and value are the line's bytes.
struct SettingsEntry {
  std::size_t line = 0;
  std::string key;
  std::string value;  ///< Of a skipped line: the line.
  LineUse use = LineUse::kSkipped;
  std::size_t replaced_by = 0;  ///< The line that replaces it.
};

/// Where the part of a launch ends that takes its parameters from the settings.
enum class SettingsEnd {
  kUnreadable,       ///< The file cannot be opened, or not be read to its end.
  kNeverEnds,        ///< It is a pipe: opening it would wait until somebody writes to it, so it was not opened.
  kMalformed,        ///< A line is not UTF-8.
  kNoRoot,           ///< No runtime root is known.
  kNoProductFolder,  ///< The folder of the executable cannot be determined.
  kComplete,         ///< All parameters are known.
};

struct SettingsReport {
  std::string path;
  SettingsEnd end = SettingsEnd::kComplete;
  std::string reason;   ///< Why the file cannot be read, in the system's words.
  std::string failure;  ///< What the launcher throws because of the file; empty when it loads.
  std::vector<SettingsEntry> entries;
  tov::WideString root;  ///< The runtime root as the launcher takes it from the file; empty when there is none.
  tov::WideString log_folder;
  bool names_log_folder = false;     ///< Whether the file has a value for it, be it empty as a path.
  tov::WideString taken_log_folder;  ///< Where the log would go: there, else to the default folder.
  std::string folder_failure;        ///< What the launcher throws because of the executable's folder.

  bool IsReadable() const { return end != SettingsEnd::kUnreadable && end != SettingsEnd::kNeverEnds; }
};

/// Reads the file at `path` as the launcher reads its own, and takes from it what a launch takes. A `root` counts
/// instead of the one in the file. The folder of the executable is this program's, which stands beside the launcher.
SettingsReport ExamineSettings(const std::string& path, const std::optional<tov::WideString>& root = std::nullopt);

}  // namespace doctor
