#include "netloader/netloaderhostfxr/src/version_order.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "foundation/cast.h"

namespace netloader {

using tov::WideString;

long VersionNumber(const WideString& version, const WideString& prefix) {
  if (prefix.size() > version.size()) {
    throw std::out_of_range("tov::basic_string_t::append()");
  }
  const auto tail = tov::text::Cast<std::string>(std::u16string_view(version).substr(prefix.size()));
  return std::strtol(tail.c_str(), nullptr, 0);  // Base 0 on purpose.
}

std::vector<WideString> NewestFirst(std::vector<WideString> versions, const WideString& prefix) {
  if (versions.size() < 2) {
    return versions;
  }
  // Each number is read once, not at each comparison.
  std::vector<std::pair<long, WideString>> numbered;
  numbered.reserve(versions.size());
  for (WideString& version : versions) {
    const long number = VersionNumber(version, prefix);
    numbered.emplace_back(number, std::move(version));
  }
  std::sort(numbered.begin(), numbered.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
  std::transform(numbered.begin(), numbered.end(), versions.begin(),
                 [](auto& entry) { return std::move(entry.second); });
  return versions;
}

bool TryNewestFirst(const Discovery& discovery, const WideString& prefix, const WideString& library,
                    const std::function<bool(const WideString&, const WideString&)>& attempt) {
  const auto versions = NewestFirst(discovery.Accepted(), prefix);
  return std::ranges::any_of(versions, [&](const WideString& version) {
    return attempt(version, HostLibraryPath(discovery.fxr_folder, version, library));
  });
}

}  // namespace netloader
