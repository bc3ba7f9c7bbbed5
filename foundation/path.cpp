#include "foundation/path.h"

namespace tov::filesystem::detail {

WideString& PathImplBase::PathAppend(WideString& path, const WideString& tail) {
  if (tail.empty()) {
    return path;
  }
  if (&tail == &path) {
    return PathAppend(path, WideString(tail));
  }
  const bool separate = !path.empty() && path.back() != u'/';
  path.reserve(path.size() + (separate ? 1 : 0) + tail.size());
  if (separate) {
    path += u'/';
  }
  return path += tail;
}

WideString& PathImplBase::PathAddLastSeparator(WideString& path) {
  if (path.empty() || path.back() != u'/') {
    path += u'/';
  }
  return path;
}

}  // namespace tov::filesystem::detail
