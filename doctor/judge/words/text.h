// Text on its way to people.
#pragma once

#include <string>
#include <string_view>

#include "foundation/utf.h"

namespace doctor {

using tov::text::ToUtf16;
using tov::text::ToUtf8;

/// The bytes as text that can be shown anywhere: what is not valid UTF-8, cannot be seen, or is a backslash
/// becomes an escape such as "\r" or "\xff".
std::string Printable(std::string_view bytes);

/// Whether the bytes are valid UTF-8.
bool IsUtf8(std::string_view bytes);

/// Between single quotes, so that blanks show, and printable.
std::string Quoted(std::string_view bytes);

/// The bytes as one word of a command line: as they are where a shell takes them so, else between quotes that give a
/// POSIX shell or, where a byte cannot be shown, bash exactly these bytes.
std::string ShellWord(std::string_view bytes);

/// The last line that says something, without blanks around it: below it a runtime may list the functions that it was
/// in.
std::string LastLine(std::string_view text);

/// How many columns a printable text takes, a code point one column each.
std::size_t Columns(std::string_view text);

}  // namespace doctor
