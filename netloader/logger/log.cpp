#include "netloader/logger/log.h"

#include "foundation/stream_output.h"
#include "netloader/logger/logger_wrapper.h"
#include "netloader/logger/wide_text_output.h"

namespace netloader::logger {
namespace {

using ::operator<<;
using tov::types::operator<<;

struct PieceWriter {
  std::ostream& stream;

  void operator()(const tov::WideString& text) const { stream << text; }

  template <typename Piece>
  void operator()(const Piece& piece) const {
    stream << piece;
  }
};

}  // namespace

void WriteLine(LogLevel level, std::initializer_list<LogPiece> pieces) {
  LoggerWrapper line(level);
  for (const LogPiece& piece : pieces) {
    std::visit(PieceWriter{line.stream}, piece);
  }
}

}  // namespace netloader::logger
