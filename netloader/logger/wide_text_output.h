// Stream output of the platform's wide characters, of which the log's fixed texts are made. The operators stand in the
// global namespace; a namespace with stream operators of its own names them in a using-declaration.
#pragma once

#include <iosfwd>
#include <string>

/// Inserts the text as UTF-8, a null one as nothing. Throws `std::range_error` for text that does not convert.
std::ostream& operator<<(std::ostream& os, const wchar_t* text);
std::ostream& operator<<(std::ostream& os, const std::wstring& text);

/// The same for a stream that is a temporary or a part of one, as in `LoggerWrapper(level).stream << L"text"`. Without
/// them the C++ library's own operator would write the pointer's digits.
std::ostream& operator<<(std::ostream&& os, const wchar_t* text);
std::ostream& operator<<(std::ostream&& os, const std::wstring& text);
