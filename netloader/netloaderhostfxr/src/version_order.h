// The order in which version folders are tried.
#pragma once

#include <vector>

#include "foundation/strings.h"

namespace netloader {

/// The number that a version is ordered by: what follows the prefix, read like a C integer. A leading "0" therefore
/// means octal (08 is 0, 010 is 8) and "0x" hexadecimal, a sign counts, reading stops where no digit follows, and no
/// digits give 0. Throws `std::out_of_range` for a name shorter than the prefix and `std::bad_cast` for a tail that is
/// not valid UTF-16.
long VersionNumber(const tov::WideString& version, const tov::WideString& prefix);

/// The versions in descending order of their numbers; those with equal numbers have no defined order. Throws what
/// `VersionNumber` throws, when there is anything to compare.
std::vector<tov::WideString> NewestFirst(std::vector<tov::WideString> versions, const tov::WideString& prefix);

}  // namespace netloader
