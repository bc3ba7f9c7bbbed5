// A product on a real runtime, of which one file at a time is spoilt.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/real/installed_product.h"

namespace tests {

/// A file or folder, if there is one, that is put aside while this lives, and put back in place of whatever then
/// stands there.
class PutAside {
 public:
  /// Moves it to `aside`, or beside itself.
  PutAside(std::filesystem::path path, std::filesystem::path aside);
  explicit PutAside(const std::filesystem::path& path) : PutAside(path, path.string() + ".aside") {}
  ~PutAside();
  PutAside(const PutAside&) = delete;
  PutAside& operator=(const PutAside&) = delete;

  [[nodiscard]] const std::filesystem::path& Path() const { return path_; }
  /// Where it is meanwhile.
  [[nodiscard]] const std::filesystem::path& Aside() const { return aside_; }

 private:
  std::filesystem::path path_;
  std::filesystem::path aside_;
};

/// What can happen to a file.
enum class Damage {
  kMissing,
  kEmpty,
  kText,
  kCut,         ///< Its first half is left.
  kHeader,      ///< Its first 512 bytes are left.
  kZeros,       ///< As long as it was, as a crash of the machine leaves it.
  kFolder,      ///< A folder stands in its place.
  kDeadLink,    ///< So does a link to nowhere.
  kPipe,        ///< So does a pipe.
  kForeign,     ///< It is for another machine.
  kOtherFile,   ///< Another assembly or library of the framework stands in its place.
  kUnreadable,  ///< Only its owner may read it.
};

/// The damage in words, for people.
[[nodiscard]] const char* NameOf(Damage damage);

/// A copy of the real framework, to be broken, under a real host 6.0.36. Every user may read it.
class BreakableRuntime : public RealRuntimeTree {
 public:
  explicit BreakableRuntime(const Prepared& prepared);

  /// A file of the framework.
  [[nodiscard]] std::filesystem::path FrameworkFile(const std::string& name) const { return framework_ / name; }
  /// The framework's folder; its name is its version.
  [[nodiscard]] const std::filesystem::path& Framework() const { return framework_; }
  [[nodiscard]] std::filesystem::path HostLibraryFile() const { return HostFile("6.0.36"); }

  /// Does it to a file, of the framework or not, and gives what undoes it.
  [[nodiscard]] std::unique_ptr<PutAside> Inflict(Damage damage, const std::filesystem::path& file) const;

 private:
  std::filesystem::path framework_;
};

}  // namespace tests
