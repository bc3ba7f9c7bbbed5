// The two string types that every layer shares.
#pragma once

#include <string>

namespace tov::types {

/// The foundation's string. `char16_t` makes the wide string (UTF-16), `char` the narrow one (UTF-8).
template <typename Char, typename Allocator = std::allocator<Char>>
using basic_string_t = std::basic_string<Char, std::char_traits<Char>, Allocator>;

}  // namespace tov::types

namespace tov {

/// UTF-16 code units: paths, settings, names. May hold lone surrogates; every conversion says what it does with them.
using WideString = types::basic_string_t<char16_t>;

/// Bytes, UTF-8 unless a declaration says otherwise.
using NarrowString = types::basic_string_t<char>;

}  // namespace tov
