// Conversions between UTF-8 and the platform's 32-bit wide characters, each taken as one UTF-16 unit.
#pragma once

#include <string>

namespace netloader::utils {

/// The NUL-terminated text as UTF-8; a surrogate pair becomes one four-byte sequence. Throws `std::range_error`
/// ("wstring_convert::to_bytes") for text that does not convert, but leaves out a high surrogate at its end. A null
/// text gives an empty string, or with `throwOnNull` a `std::runtime_error`.
std::string ToString(const wchar_t* text, bool throwOnNull);

/// The NUL-terminated UTF-8 as wide characters; above U+FFFF it gives a surrogate pair. Throws `std::range_error`
/// ("wstring_convert::from_bytes") for bytes that do not convert, but leaves out an incomplete sequence at their end. A
/// null text gives an empty string, or with `throwOnNull` a `std::runtime_error`.
std::wstring ToWString(const char* text, bool throwOnNull);

}  // namespace netloader::utils
