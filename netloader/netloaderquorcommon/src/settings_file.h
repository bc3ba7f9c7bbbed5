// Reading the settings file.
#pragma once

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

namespace netloader::quor::detail {

/// The file, line by line. A C stream: setting up a C++ one with its locales costs a good part of a launch.
class SettingsFile {
 public:
  /// Opens the file for reading; `Error()` says why it could not. Throws `std::bad_alloc` for want of memory.
  explicit SettingsFile(const std::string& path);
  SettingsFile(const SettingsFile&) = delete;
  SettingsFile& operator=(const SettingsFile&) = delete;
  ~SettingsFile();

  bool IsOpen() const { return file_ != nullptr; }

  /// Why the file could not be opened, or not be read to its end, as errno; 0 while nothing failed. A folder opens,
  /// and is an empty file.
  int Error() const { return error_; }

  /// The next line without its newline, valid until the one after it is read; the last one may lack the newline. Empty
  /// at the end, and where the file cannot be read on, which `Error()` then says: what of a line was read up to there
  /// is dropped. Throws `std::bad_alloc`.
  std::optional<std::string_view> NextLine();

 private:
  std::optional<std::string_view> LastLine(std::optional<std::string_view> rest);

  std::FILE* file_;
  int error_ = 0;
  char* line_ = nullptr;  // The C library's, which makes it longer.
  std::size_t room_ = 0;
};

}  // namespace netloader::quor::detail
