// Whether the dynamic loader may see a library.
#pragma once

#include <string>

#include "netloader/netloaderhostfxr/src/elf_check.h"

namespace netloader {

/// What was thought of a library before it is loaded.
struct LibraryFinding {
  bool has_string_token = false;  ///< Its path means another file to the dynamic loader; the file was not looked at.
  ElfVerdict elf = ElfVerdict::kLoadable;
  std::string detail;  ///< The reason to refuse it in words, for people; empty when it may be loaded.
};

/// Refuses a library whose path holds a word that the dynamic loader replaces (see string_token.h), and one that is not
/// a whole shared object for this machine (see elf_check.h). `path` is UTF-8.
LibraryFinding CheckLibrary(const std::string& path);

}  // namespace netloader
