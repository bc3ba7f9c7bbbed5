// A depth-first walk through a folder tree.
#pragma once

#include <sys/stat.h>

#include <deque>
#include <memory>
#include <string_view>
#include <utility>

#include "foundation/convert_to_container.h"
#include "foundation/long_path.h"
#include "foundation/result_code.h"
#include "foundation/strings.h"

namespace tov::filesystem {

/// The policy of never entering a symbolic link, whatever it points at.
struct NoFollowSymLinksResolvingStrategy {
  /// The status behind the link is read, so that the file system resolves it, and changes nothing.
  static bool Enters(const char* link) noexcept {
    struct stat status {};
    if (posix::filesystem::detail::long_path::Stat(link, status) == 0 && S_ISLNK(status.st_mode)) {
      static_cast<void>(::stat(link, &status));
    }
    return false;
  }
};

/// Walks a folder tree depth first and visits every entry of every folder it reaches, "." and ".." included, in the
/// operating system's order. A subfolder is entered at once: the caller next sees its first entry. A subfolder that
/// cannot be opened stays a plain entry. Nothing here throws but for want of memory.
template <typename Strategy, typename Find>
class DirectoryEnumerator {
 public:
  /// The open folders, the one being read last.
  class Stack {
   public:
    /// Takes the open folder over.
    void Push(std::unique_ptr<Find>& find, const NarrowString& path) { levels_.push_back({std::move(find), path}); }
    /// Closes the folder read last.
    void Pop() { levels_.pop_back(); }
    void Clear() { levels_.clear(); }
    bool IsEmpty() const { return levels_.empty(); }
    Find& TopFind() const { return *levels_.back().find; }
    const NarrowString& TopPath() const { return levels_.back().path; }

   private:
    struct Level {
      std::unique_ptr<Find> find;
      NarrowString path;
    };
    std::deque<Level> levels_;
  };

  /// Opens the root and descends to the first entry. Returns 0 or the failure's result code, and then nothing is open.
  int Open(const WideString& path, const Strategy& strategy) {
    strategy_ = strategy;
    NarrowString root;
    if (const int result = text::Utf16ToUtf8::Do(path, root, 0); result_code::IsFailure(result)) {
      return result;
    }
    auto find = std::make_unique<Find>();
    if (const int result = find->Open(root); result_code::IsFailure(result)) {
      return result;
    }
    stack_.Push(find, root);
    Descend();
    return result_code::kNoError;
  }

  /// Moves to the next entry: leaves the folders that are finished and enters the subfolders it meets. A read error
  /// ends the walk. Must not be called on a finished walk.
  void Next() {
    while (true) {
      const int result = stack_.TopFind().Next();
      if (stack_.TopFind().HasEntry()) {
        return Descend();
      }
      if (result != result_code::kNoError) {
        return stack_.Clear();
      }
      stack_.Pop();
      if (stack_.IsEmpty()) {
        return;
      }
    }
  }

  /// Enters the current entry when it is a real folder other than "." and "..". True when it did.
  bool TryEnterSubdirectory() {
    const Find& top = stack_.TopFind();
    const std::string_view name = top.EntryName();
    if (name == "." || name == "..") {
      return false;
    }
    // Asked for, since not every file system says in the entry what it is.
    struct stat status {};
    entry_path_ = top.FolderPath();
    entry_path_ += name;
    if (posix::filesystem::detail::long_path::Stat(entry_path_.c_str(), status) != 0) {
      return false;
    }
    if (S_ISLNK(status.st_mode)) {
      return strategy_.Enters(ChildPath(name).c_str()) && Enter(ChildPath(name));
    }
    return S_ISDIR(status.st_mode) && Enter(ChildPath(name));
  }

  bool IsFinished() const { return stack_.IsEmpty(); }

  /// The folder being read (UTF-8), as it was reached: the root as given, without a "/" added at the end.
  const NarrowString& CurrentFolder() const { return stack_.TopPath(); }

  /// The entry being visited.
  std::string_view CurrentEntry() const { return stack_.TopFind().EntryName(); }

 private:
  bool Enter(const NarrowString& path) {
    auto find = std::make_unique<Find>();
    if (result_code::IsFailure(find->Open(path))) {
      return false;
    }
    stack_.Push(find, path);
    return true;
  }

  void Descend() {
    while (TryEnterSubdirectory()) {
    }
  }

  // From the path as it was reached, since that of the open folder has a "/" at its end.
  NarrowString ChildPath(std::string_view name) const {
    NarrowString path;
    path.reserve(stack_.TopPath().size() + 1 + name.size());
    path = stack_.TopPath();
    if (!path.empty() && path.back() != '/') {
      path += '/';
    }
    return path += name;
  }

  [[no_unique_address]] Strategy strategy_;
  Stack stack_;
  NarrowString entry_path_;  // Kept from entry to entry for its room.
};

}  // namespace tov::filesystem
