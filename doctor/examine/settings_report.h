// What the settings file says, line by line.
#pragma once

#include <cstddef>
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

struct SettingsReport {
  std::string path;
  bool is_open = false;
  std::string reason;   ///< Why it cannot be opened, in the system's words.
  std::string failure;  ///< What the launcher throws because of it; empty when it loads.
  std::vector<SettingsEntry> entries;
  tov::WideString root;  ///< The runtime root as the launcher takes it; empty when there is none.
  tov::WideString log_folder;
};

/// Reads the file at `path` as the launcher reads its own.
SettingsReport ExamineSettings(const std::string& path);

}  // namespace doctor
