// The machine that is asked, by whom and when.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace doctor {

/// A limit of this process, by the name that `prlimit` and, behind "Limit", the units of services have for it.
struct ProcessLimit {
  std::string name;
  std::uint64_t soft = 0;
  std::optional<std::uint64_t> hard = {};  ///< Empty when there is none.
};

/// Texts are bytes as the system gives them, empty where it gives none.
struct Machine {
  std::string host = {};
  std::string user = {};  ///< The name of the user whose rights count.
  std::uint32_t user_id = 0;
  std::uint32_t group_id = 0;
  std::vector<std::string> groups = {};  ///< By name, or by number where they have none; this process's own first.
  std::string time = {};                 ///< Local, in the form 2026-11-21T16:30:05+01:00.
  std::string system = {};               ///< Such as "Debian 12".
  std::string kernel = {};
  std::string c_library = {};
  std::vector<ProcessLimit> limits = {};  ///< Those that are set.
  std::string locale = {};                ///< The variable that decides and its value, such as "LANG=de_DE.UTF-8".
};

/// Looks at this process and where it runs.
Machine LookAtMachine();

}  // namespace doctor
