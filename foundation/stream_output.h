// Stream output of wide strings.
#pragma once

#include <iosfwd>

#include "foundation/strings.h"

namespace tov::types {

/// Inserts the text as UTF-8. A text that does not convert (a lone surrogate) is written as nothing. Callers outside
/// this namespace name it in a using-declaration: the wide string lives in `std`, so it is not found by its argument.
std::ostream& operator<<(std::ostream& stream, const WideString& text);

}  // namespace tov::types
