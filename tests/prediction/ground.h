// Where a layout is laid out, step by step, and written down as commands for a shell.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tests {

/// The text between single quotes, for bash.
[[nodiscard]] std::string ShellQuoted(std::string_view text);

/// An empty folder and the settings file. Every step is done at once and noted; one that cannot be done (a folder under
/// a file, say) is noted, too, and fails in the shell as it failed here. All is removed when destroyed.
class Ground {
 public:
  explicit Ground(std::filesystem::path folder);
  ~Ground();
  Ground(const Ground&) = delete;
  Ground& operator=(const Ground&) = delete;

  [[nodiscard]] const std::filesystem::path& Folder() const { return folder_; }

  void MakeFolder(const std::filesystem::path& path);
  void MakeFile(const std::filesystem::path& path, std::string_view bytes);
  void MakeLink(const std::filesystem::path& path, const std::filesystem::path& target);
  /// A second name of the file `target`.
  void MakeHardLink(const std::filesystem::path& path, const std::filesystem::path& target);
  /// The first `size` bytes of `library`, which has a short name for people.
  void MakeCut(const std::filesystem::path& path, const std::filesystem::path& library, std::size_t size);
  /// All of `library`.
  void MakeCopy(const std::filesystem::path& path, const std::filesystem::path& library);
  /// One byte of a file that is there.
  void ChangeByte(const std::filesystem::path& path, std::size_t offset, unsigned char value);
  void TakeRights(const std::filesystem::path& path, std::filesystem::perms left);

  /// A line that is of no effect here.
  void Note(const std::string& line) { recipe_ += line + "\n"; }

  [[nodiscard]] const std::string& Recipe() const { return recipe_; }

 private:
  std::filesystem::path folder_;
  std::string recipe_;
};

}  // namespace tests
