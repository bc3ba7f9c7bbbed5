#include "netloader/logger/file_logger.h"

#include <stdexcept>
#include <utility>

#include "foundation/cast.h"
#include "foundation/path.h"
#include "foundation/stream_output.h"
#include "foundation/utf.h"
#include "netloader/utils/current_time.h"
#include "netloader/utils/path_utils.h"

namespace netloader::logger {
namespace {

using tov::WideString;
using tov::filesystem::detail::PathImplBase;

const WideString kLogFileExtension = u".log";

// What stands in the way of a name (a folder, a file of another user) may not stand in the way of the next.
constexpr unsigned int kAttempts = 10;

WideString LevelText(LogLevel level) {
  switch (level) {
    case LogLevel::TRACE:
      return u"TRACE";
    case LogLevel::ERROR:
      return u"ERROR";
    case LogLevel::INFRA:
      return u"INFRA";
  }
  return u"UNKN";
}

}  // namespace

FileLogger::FileLogger(WideString logsFolder, WideString name)
    : logsDir(std::move(logsFolder)), logName(std::move(name)) {
  OpenStream();
}

FileLogger::~FileLogger() = default;

void FileLogger::OpenStream() {
  if (!utils::CheckIsValidPath(logsDir)) {
    throw std::invalid_argument("Cannot use not absolute logs path: " + tov::text::ToUtf8(logsDir));
  }
  for (unsigned int attempt = 0; attempt < kAttempts; ++attempt) {
    const WideString path = PathOfAttempt(attempt);
    // Leniently, so that every wide path can be handed on.
    stream.open(tov::text::ToUtf8(path), std::ios::out | std::ios::trunc);
    if (stream.is_open()) {
      const std::string message = tov::text::Cast<std::string>(u"Log has been created with name: " + path);
      return FileLogger::Trace(LogLevel::INFRA, message.c_str());
    }
  }
}

WideString FileLogger::PathOfAttempt(unsigned int attempt) const {
  WideString name = logName;
  if (attempt != 0) {
    name += {u'(', static_cast<char16_t>(u'0' + attempt), u')'};
  }
  WideString path = logsDir;
  return PathImplBase::PathAppend(path, name + kLogFileExtension);
}

bool FileLogger::IsValid() {
  return stream.is_open();
}

void FileLogger::Trace(LogLevel level, const char* text) {
  TraceImpl(LevelText(level), text);
}

void FileLogger::TraceImpl(WideString levelText, const char* text) noexcept {
  try {
    if (!stream.is_open()) {
      return;
    }
    BeginWrite(std::move(levelText));
    stream << text;  // A null text sets the stream's bad state, on purpose.
    EndWrite();
  } catch (...) {  // NOLINT(bugprone-empty-catch): a line that cannot be written is lost.
  }
}

void FileLogger::BeginWrite(WideString levelText) {  // NOLINT(performance-unnecessary-value-param)
  stream << utils::GetCurrentTimeString(false) << "\t";
  tov::types::operator<<(stream, levelText) << "\t";
}

void FileLogger::EndWrite() {
  stream << std::endl;
}

}  // namespace netloader::logger
