#include "doctor/judge/verdicts/version_clue.h"

#include <filesystem>

#include "doctor/judge/words/text.h"
#include "doctor/judge/words/version_reasons.h"
#include "foundation/strings.h"
#include "foundation/utf.h"

namespace doctor {

Clue AtVersion(const VersionReport& version) {
  const std::string library = ToUtf8(version.library);
  return AtPath(library, {{"library", Printable(library)},
                          {"folder_word", ShellWord(std::filesystem::path(library).parent_path().string())},
                          {"version", Printable(version.name)},
                          {"detail", Printable(Detail(version))}});
}

}  // namespace doctor
