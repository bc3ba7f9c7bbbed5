// A folder of a test's own.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tests {

/// An empty folder, removed with all it holds when destroyed. Neither copied nor moved.
class TempFolder {
 public:
  /// Makes the folder in the folder for temporary files.
  TempFolder();
  /// Makes the folder in `parent`, which must exist.
  explicit TempFolder(const std::filesystem::path& parent);
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  [[nodiscard]] const std::filesystem::path& Path() const { return path_; }

  /// The path of `name` inside the folder, whether or not there is one.
  [[nodiscard]] std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

/// Writes `bytes` to `file`, in place of what was there; makes the folders above it. Throws when it cannot.
void WriteFile(const std::filesystem::path& file, std::string_view bytes);

/// All bytes of `file`. Throws when it cannot be read.
[[nodiscard]] std::string ReadFile(const std::filesystem::path& file);

}  // namespace tests
