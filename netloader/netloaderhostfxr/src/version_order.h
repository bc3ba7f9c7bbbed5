// The order in which version folders are tried.
#pragma once

#include <functional>
#include <vector>

#include "foundation/strings.h"
#include "netloader/netloaderhostfxr/src/version_discovery.h"

namespace netloader {

/// The number that a version is ordered by: what follows the prefix, read like a C integer. A leading "0" therefore
/// means octal (08 is 0, 010 is 8) and "0x" hexadecimal, a sign counts, reading stops where no digit follows, and no
/// digits give 0. Throws `std::out_of_range` for a name shorter than the prefix and `std::bad_cast` for a tail that is
/// not valid UTF-16.
long VersionNumber(const tov::WideString& version, const tov::WideString& prefix);

/// The versions in descending order of their numbers; those with equal numbers have no defined order. Throws what
/// `VersionNumber` throws, when there is anything to compare.
std::vector<tov::WideString> NewestFirst(std::vector<tov::WideString> versions, const tov::WideString& prefix);

/// Hands each accepted version with the path of its library to `attempt`, the newest first, until one returns true.
/// Whether one did. Throws what `NewestFirst` throws.
bool TryNewestFirst(const Discovery& discovery, const tov::WideString& prefix, const tov::WideString& library,
                    const std::function<bool(const tov::WideString& version, const tov::WideString& path)>& attempt);

}  // namespace netloader
