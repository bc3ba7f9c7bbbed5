// Words in a path that the dynamic loader replaces.
#pragma once

#include <string_view>

namespace netloader {

/// The first dynamic string token of a path: $ORIGIN, $LIB or $PLATFORM, also in braces, where the dynamic loader
/// recognises it. Empty when there is none. Part of `path`.
std::string_view FindStringToken(std::string_view path);

}  // namespace netloader
