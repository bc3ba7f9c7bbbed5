// Strict conversions between wide strings and the multibyte text of the operating system.
#pragma once

#include <string>
#include <string_view>

#include "foundation/strings.h"

namespace tov::text {

/// The text in another string type. The multibyte side is UTF-8 under every locale, as in a UTF-8 locale; a NUL is a
/// character like any other. Throws `std::bad_cast` for text that is not well-formed (a lone surrogate, an invalid,
/// overlong or incomplete sequence, a code point above U+10FFFF). Deleted for the types without a conversion, so that
/// naming one does not compile; declared only, it would be found missing when the program is linked.
template <typename To>
To Cast(std::u16string_view text) = delete;
template <typename To>
To Cast(std::string_view text) = delete;

template <>
std::string Cast<std::string>(std::u16string_view text);
template <>
WideString Cast<WideString>(std::string_view text);

/// The foundation's narrow string as a standard one: the bytes unchanged.
template <>
std::string Cast<std::string>(std::string_view text);

/// `Cast<WideString>` into a string whose memory is used again. Where it throws, the string may hold anything.
void CastInto(WideString& converted, std::string_view text);

}  // namespace tov::text
