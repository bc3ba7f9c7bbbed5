// A look at a managed assembly before the runtime maps it.
#pragma once

#include <string>

namespace doctor {

enum class PeVerdict {
  kSound,
  kMissing,       ///< There is none.
  kUnreadable,    ///< It cannot be opened or read, or is not a regular file.
  kNotManaged,    ///< Empty, text, another format, or a program without anything for .NET.
  kOtherMachine,  ///< For neither any machine nor x64.
  kCutShort,      ///< Headers or sections reach beyond the end of the file.
};

struct PeFinding {
  PeVerdict verdict;
  std::string detail;  ///< The reason in words, for people; empty when sound.
};

/// Determines whether the file is a PE file with a CLI header whose sections lie inside the file, for any machine or
/// x64. Opens the file once, without ever waiting, and reads at most a few KiB, wherever the headers point. It does not
/// see damage behind the headers.
PeFinding CheckPe(const char* path);

}  // namespace doctor
