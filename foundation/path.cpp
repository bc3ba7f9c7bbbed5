#include "foundation/path.h"

namespace tov::filesystem::detail {

WideString& PathImplBase::PathAppend(WideString& path, const WideString& tail) {
  if (tail.empty()) {
    return path;
  }
  if (&tail == &path) {  // Growing the path would move the tail while it is read.
    return PathAppend(path, WideString(tail));
  }
  const bool separate = !path.empty() && path.back() != u'/';
  // In one step; the separator alone would often make the path grow twice.
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
