#include "netloader/utils/path_utils.h"

namespace netloader::utils {

bool CheckIsValidPath(const tov::WideString& path) {
  return path.starts_with(u'/');
}

tov::WideString GetLastFolderName(const tov::WideString& path) {
  const auto slash = path.rfind(u'/');
  return slash == tov::WideString::npos ? path : path.substr(slash + 1);
}

tov::WideString GetParentPath(const tov::WideString& path) {
  const auto slash = path.rfind(u'/');
  if (slash == tov::WideString::npos) {
    return {};
  }
  return slash == 0 ? tov::WideString(u"/") : path.substr(0, slash);
}

}  // namespace netloader::utils
