// One open folder and the entry that was read last.
#pragma once

#include <dirent.h>

#include <memory>
#include <string_view>

#include "foundation/strings.h"

namespace tov::posix::filesystem {

/// Reads a folder entry by entry, in the order of the operating system, "." and ".." included. Closes it when
/// destroyed.
class FileFind {
 public:
  /// Leaves the folder that was open, opens this one (UTF-8, any length; an empty path is ".") and reads its first
  /// entry. Returns 0 or the failure's result code: "Not found" for a folder without any entry. Nothing is open then.
  int Open(const NarrowString& path);

  /// Reads the next entry of the open folder. Returns 0 or the result code of a failed read; at the end and after a
  /// failure there is no entry.
  int Next() noexcept;

  bool HasEntry() const noexcept { return entry_ != nullptr; }

  /// The current entry's name; there must be one. Valid until the next read.
  std::string_view EntryName() const noexcept { return entry_->d_name; }

  /// The folder's path, which ends with "/" once it is open.
  const NarrowString& FolderPath() const noexcept { return folder_path_; }

 private:
  struct Close {
    void operator()(DIR* folder) const noexcept { ::closedir(folder); }
  };

  int OpenFolder();

  std::unique_ptr<DIR, Close> folder_;
  const dirent* entry_ = nullptr;
  NarrowString folder_path_;
};

}  // namespace tov::posix::filesystem
