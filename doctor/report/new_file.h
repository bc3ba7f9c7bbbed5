// A file that is written once, for its owner only.
#pragma once

#include <string>
#include <string_view>

namespace doctor {

/// Makes the file, with the right to read for its owner only, and writes all of the text to the disk. Nothing that is
/// there already is written to, be it a link or a pipe. Returns why it is not there or not whole; an empty text when it
/// is.
std::string WriteNewFile(const std::string& path, std::string_view text);

}  // namespace doctor
