#include "netloader/netloaderquorcommon/src/settings_file.h"

#include <cerrno>
#include <cstdlib>
#include <new>

namespace netloader::quor::detail {

SettingsFile::SettingsFile(const std::string& path) : file_(std::fopen(path.c_str(), "re")) {
  if (IsOpen()) {
    return;
  }
  error_ = errno;
  // The file may well be there: this must not pass for a missing one.
  if (error_ == ENOMEM) {
    throw std::bad_alloc();
  }
}

SettingsFile::~SettingsFile() {
  std::free(line_);
  if (IsOpen()) {
    std::fclose(file_);
  }
}

std::optional<std::string_view> SettingsFile::NextLine() {
  // Not getline, which the C library's headers replace by a name of their own.
  const ssize_t length = ::getdelim(&line_, &room_, '\n', file_);
  if (length < 0) {
    return LastLine(std::nullopt);
  }
  const std::string_view line(line_, static_cast<std::size_t>(length));
  return line.ends_with('\n') ? line.substr(0, line.size() - 1) : LastLine(line);
}

// The C library returns the beginning of a line as a line when it fails in the middle of it, and nothing at all when
// it has no memory for the line. Only the stream itself knows whether this is the end of the file.
std::optional<std::string_view> SettingsFile::LastLine(std::optional<std::string_view> rest) {
  if (::ferror_unlocked(file_) != 0) {
    error_ = errno == EISDIR ? 0 : errno;
    return std::nullopt;
  }
  if (::feof_unlocked(file_) == 0) {
    throw std::bad_alloc();
  }
  return rest;
}

}  // namespace netloader::quor::detail
