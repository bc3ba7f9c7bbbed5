// Joining of POSIX paths held as wide strings. The only special character is "/".
#pragma once

#include "foundation/strings.h"

namespace tov::filesystem::detail {

/// The path operations for the native (POSIX) path rules. Nothing here touches the file system.
struct PathImplBase {
  /// Appends `tail` in place, with one "/" between unless `path` is empty or ends with one. A leading "/" of `tail` is
  /// kept; an empty `tail` changes nothing. `tail` may be `path` itself.
  static WideString& PathAppend(WideString& path, const WideString& tail);

  /// Makes `path` end with "/" in place; an empty path becomes "/".
  static WideString& PathAddLastSeparator(WideString& path);
};

}  // namespace tov::filesystem::detail
