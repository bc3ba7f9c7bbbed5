#include "doctor/judge/near_misses/broken_file_clue.h"

#include <filesystem>

#include "doctor/judge/near_misses/access.h"
#include "doctor/judge/words/text.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

std::string CommandFor(const BrokenFile& file, const fs::path& folder) {
  if (!file.may_be_read && file.is_listed) {
    return CommandToPermit(file.path, "r");
  }
  return file.is_application ? "install the product again"
                             : "install the .NET runtime " + Printable(folder.filename().string()) + " again";
}

std::string StateOf(const BrokenFile& file) {
  return !file.is_listed            ? "is " + file.detail
         : !file.may_be_read        ? "cannot be read by this user"
         : file.detail == "missing" ? "is missing"
                                    : "is broken: " + Printable(file.detail);
}

}  // namespace

Clue AtBrokenFile(const BrokenFile& file) {
  const fs::path path = file.path;
  return {Printable(file.path),
          {{"name", Printable(path.filename().string())},
           {"state", StateOf(file)},
           {"folder", Printable(path.parent_path().string())},
           {"command", CommandFor(file, path.parent_path())}}};
}

}  // namespace doctor
