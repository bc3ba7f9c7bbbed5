// Files with their owners and rights, as `ls -l` shows them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace doctor {

/// One file, as it is itself: links are not followed.
struct ListedFile {
  std::string path;
  std::string rights = {};  ///< Such as "drwxr-xr-x"; empty when it cannot be looked at.
  std::string owner = {};   ///< By name, or by number where there is none.
  std::string group = {};
  std::uint64_t size = 0;
  std::string target = {};    ///< Where a link leads.
  std::string build_id = {};  ///< Of a library.
  std::string reason = {};    ///< Why it cannot be looked at, in the system's words.
};

using Listing = std::vector<ListedFile>;

/// The path and every folder above it, from / on.
Listing ListTheWayTo(const std::string& path);

/// What is in the folder, by name; the folder itself with a reason when it cannot be read.
Listing ListFolder(const std::string& folder);

}  // namespace doctor
