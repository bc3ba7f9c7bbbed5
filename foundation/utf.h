// Lenient conversions between UTF-16 and UTF-8 for callers that go on whatever the text is.
#pragma once

#include <string_view>

#include "foundation/strings.h"

namespace tov::text {

/// The text as UTF-8, a lone surrogate as three bytes; empty when there is no memory for it. Never throws.
[[nodiscard]] NarrowString ToUtf8(std::u16string_view text) noexcept;

/// The UTF-8 as UTF-16, read as `Utf8CharConverter` reads it; empty when it is malformed or there is no memory for it.
/// Never throws.
[[nodiscard]] WideString ToUtf16(std::string_view bytes) noexcept;

}  // namespace tov::text
