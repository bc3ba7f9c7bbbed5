#include "netloader/netloaderhostfxr/src/library_check.h"

#include <string_view>
#include <utility>

#include "netloader/netloaderhostfxr/src/string_token.h"

namespace netloader {

LibraryFinding CheckLibrary(const std::string& path) {
  // The file that would be loaded is not the one that was found and checked, and can be anything. There is no way to
  // write such a path so that it keeps its meaning, and by any other path the host would miss its own folder.
  if (const std::string_view token = FindStringToken(path); !token.empty()) {
    return {true, ElfVerdict::kLoadable,
            "its path contains " + std::string(token) + ", which the dynamic loader replaces"};
  }
  ElfFinding elf = CheckElf(path.c_str());
  return {false, elf.verdict, std::move(elf.detail)};
}

}  // namespace netloader
