// A file of a runtime or an application that cannot be used.
#pragma once

#include <optional>
#include <string>

namespace doctor {

/// What a launch cannot do without a file.
enum class Need {
  kStart,  ///< Start the runtime.
  kMain,   ///< Reach the application's first function.
  kLater,  ///< Whatever uses it, perhaps nothing.
};

/// A file that a runtime loads, or would load when it is needed.
struct BrokenFile {
  std::string path;
  Need need = Need::kLater;
  bool may_be_read = true;      ///< False when this user may not read it.
  bool is_cut_library = false;  ///< Whether it is a library that is cut short, which kills whoever loads it.
  bool is_application = false;  ///< Whether it belongs to the application.
  std::string detail = {};      ///< "missing", "cut short: ..."
  bool is_named = false;        ///< Whether the application's own code names it.
  bool is_listed = true;        ///< False when it is there, and the runtime is not told so.

  bool operator==(const BrokenFile&) const = default;
};

/// What is wrong with the assembly; nothing when it is sound.
std::optional<BrokenFile> BrokenAssembly(const std::string& path, Need need, bool isApplication);

/// What is wrong with the library.
std::optional<BrokenFile> BrokenLibrary(const std::string& path, Need need);

}  // namespace doctor
