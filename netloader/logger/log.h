// Writing a log line from its pieces.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string_view>
#include <variant>

#include "foundation/strings.h"
#include "netloader/logger/global_logger.h"
#include "netloader/logger/logger.h"

namespace netloader::logger {

/// One piece of a line; refers to what it was made from. Fixed texts are wide characters, paths and names wide strings,
/// file contents bytes. A null `const char*` ends the line where it stands: the stream takes nothing after it.
using LogPiece = std::variant<const wchar_t*, const char*, std::string_view,
                              std::reference_wrapper<const tov::WideString>, std::int64_t>;

/// Writes the pieces, with nothing between them, as one line.
void WriteLine(LogLevel level, std::initializer_list<LogPiece> pieces);

/// The same, at the price of one comparison while the shared empty logger is current.
template <typename... Pieces>
void Log(LogLevel level, const Pieces&... pieces) {
  if (!IsEmptyLoggerCurrent()) {
    WriteLine(level, {LogPiece(pieces)...});
  }
}

}  // namespace netloader::logger
