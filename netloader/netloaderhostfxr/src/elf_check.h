// A look at a library before the dynamic loader maps it.
#pragma once

#include <string>

namespace netloader {

enum class ElfVerdict {
  kLoadable,
  kUnreadable,    ///< It cannot be opened or read, or is not a regular file.
  kNotElf,        ///< Empty, text, another format.
  kOtherMachine,  ///< ELF for another machine, word size or byte order.
  kNotShared,     ///< ELF, but no shared object.
  kCutShort,      ///< Headers or loadable segments reach beyond the end of the file.
  kMalformed,     ///< Headers that contradict each other.
};

struct ElfFinding {
  ElfVerdict verdict;
  std::string detail;  ///< The reason in words, for people; empty when loadable.
};

/// Determines whether the file's ELF header and program headers let the dynamic loader map it without touching pages
/// that are not there, which would end the process. What a linker makes passes, at whatever address it was linked. Some
/// damages are refused although the dynamic loader may be lucky with them: segments out of order, so that one lies
/// outside of the range from the first to the last; a dynamic section outside of it, where another library's bytes may
/// pass for one; an empty segment in a page that the file does not have, as long as nothing else stands there; and a
/// file cut where nothing is touched while it is loaded, such as within the last page of a segment. Opens the file
/// once, without ever waiting, reads at most twice, maps nothing. It does not see damage behind the headers, nor where
/// those point that describe neither a segment to load nor the dynamic section, such as PT_PHDR and PT_GNU_PROPERTY.
ElfFinding CheckElf(const char* path);

}  // namespace netloader
