#include "netloader/netloaderquorcommon/src/settings_file.h"

#include <cerrno>
#include <cstdlib>
#include <ios>
#include <new>

#include "foundation/cast.h"

namespace netloader::quor {

using tov::WideString;
using tov::text::Cast;

SettingsFile::SettingsFile(const std::string& path) : file_(std::fopen(path.c_str(), "re")) {}

SettingsFile::~SettingsFile() {
  std::free(line_);
  if (IsOpen()) {
    std::fclose(file_);
  }
}

std::optional<std::string_view> SettingsFile::NextLine() {
  errno = 0;
  const ssize_t length = ::getline(&line_, &room_, file_);
  if (length < 0) {
    if (errno == ENOMEM) {
      throw std::bad_alloc();
    }
    return std::nullopt;
  }
  std::string_view line(line_, static_cast<std::size_t>(length));
  if (line.ends_with('\n')) {
    line.remove_suffix(1);
  }
  return line;
}

SettingsPair DecodeSettingsLine(const SettingsLine& line) {
  return {Cast<WideString>(line.key), Cast<WideString>(line.value)};
}

std::system_error CannotOpenSettings(const std::string& path) {
  return {std::io_errc::stream, "Cannot open settings file by path: " + path};
}

WideString SettingsPath(const WideString& value) {
  return value.substr(0, value.find(u'\0'));
}

}  // namespace netloader::quor
