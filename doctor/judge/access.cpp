#include "doctor/judge/access.h"

#include <fcntl.h>
#include <unistd.h>

namespace doctor {

namespace fs = std::filesystem;

bool MayUse(const fs::path& file, int mode) {
  return ::faccessat(AT_FDCWD, file.c_str(), mode, AT_EACCESS) == 0;
}

std::optional<Clue> ClosedFolderAbove(const fs::path& file) {
  fs::path above;
  for (const fs::path& name : file.parent_path()) {
    above /= name;
    std::error_code ignored;
    if (fs::is_directory(above, ignored) && !MayUse(above, X_OK)) {
      return AtPath(above.string());
    }
  }
  return std::nullopt;
}

}  // namespace doctor
