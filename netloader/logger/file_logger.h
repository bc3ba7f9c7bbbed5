// The logger that writes a text file.
#pragma once

#include <fstream>

#include "foundation/strings.h"
#include "netloader/logger/logger.h"

namespace netloader::logger {

/// Writes each line as time stamp, tab, level, tab, message, newline, and flushes it. A logger whose file could not be
/// opened drops every line and never tries again. Not synchronised.
class FileLogger : public ILogger {
 public:
  /// Opens `<logsDir>/<logName>.log`, emptying a file of that name; when it cannot be opened, the names with (1) to (9)
  /// before the extension are tried. The folder is not created. Throws `std::invalid_argument` for a folder that is not
  /// absolute, and `std::bad_cast` for a path that has no UTF-8 form (the file is there by then, and empty).
  FileLogger(tov::WideString logsDir, tov::WideString logName);
  ~FileLogger() override;

  /// True while the file is open, even after a null text has silenced the logger.
  bool IsValid() override;

  /// Writes one line. A null text puts the stream into its bad state: that line ends after the level, and every later
  /// line is lost.
  void Trace(LogLevel level, const char* text) override;

 private:
  void OpenStream();
  tov::WideString PathOfAttempt(unsigned int attempt) const;
  void TraceImpl(tov::WideString levelText, const char* text) noexcept;
  void BeginWrite(tov::WideString levelText);
  void EndWrite();

  tov::WideString logsDir;
  tov::WideString logName;
  std::ofstream stream;
};

}  // namespace netloader::logger
