// The grammar of the settings file, one line at a time.
#pragma once

#include <optional>
#include <string_view>

namespace netloader::quor::detail {

/// A line that sets something; both parts are pieces of the line, byte for byte.
struct SettingsLine {
  std::string_view key;    ///< What precedes the first "=". Never empty.
  std::string_view value;  ///< All that follows it.
};

/// The parts of a line (without its newline); empty for a line that sets nothing: without any "=", or with one at its
/// very beginning. There are no comments, sections or quotes, and nothing is trimmed: blanks and a carriage return at
/// the end stay.
std::optional<SettingsLine> ParseSettingsLine(std::string_view line);

}  // namespace netloader::quor::detail
