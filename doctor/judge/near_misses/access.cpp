#include "doctor/judge/near_misses/access.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "doctor/judge/words/text.h"

namespace doctor {

namespace fs = std::filesystem;

bool MayUse(const fs::path& file, int mode) {
  return ::faccessat(AT_FDCWD, file.c_str(), mode, AT_EACCESS) == 0;
}

std::string RightsThatCount(const fs::path& file) {
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0) {
    return "o";
  }
  const bool isOwner = status.st_uid == ::geteuid();
  return isOwner ? "u" : status.st_gid == ::getegid() || ::group_member(status.st_gid) != 0 ? "g" : "o";
}

std::string CommandToPermit(const fs::path& file, std::string_view rights) {
  return "chmod " + RightsThatCount(file) + "+" + std::string(rights) + " " + ShellWord(file.string());
}

Clue AtClosed(const fs::path& file) {
  return AtPath(file.string(), {{"who", RightsThatCount(file)}});
}

std::optional<Clue> ClosedFolderAbove(const fs::path& file) {
  fs::path above;
  for (const fs::path& name : file.parent_path()) {
    above /= name;
    std::error_code ignored;
    if (fs::is_directory(above, ignored) && !MayUse(above, X_OK)) {
      return AtClosed(above);
    }
  }
  return std::nullopt;
}

std::string ClosedToOthers(const fs::path& file) {
  fs::path above;
  for (const fs::path& name : file) {
    above /= name;
    struct stat status {};
    if (::stat(above.c_str(), &status) != 0) {
      return {};
    }
    const mode_t needed = S_ISDIR(status.st_mode) ? S_IXOTH : S_IROTH;
    if ((status.st_mode & needed) == 0) {
      return above.string();
    }
  }
  return {};
}

}  // namespace doctor
