// A file beside the application, and the JSON in it as the host reads it.
#pragma once

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace doctor {

enum class FileState { kPresent, kMissing, kUnreadable, kMalformed };

struct FileReport {
  std::string path;
  FileState state = FileState::kMissing;
  int error = 0;         ///< Why it cannot be opened, as an errno value; 0 when it can.
  std::size_t line = 0;  ///< Where it stops to be JSON, counted from 1; 0 when it does not.
};

/// Opens the file without waiting for anything.
FileReport LookAtFile(const std::string& path);

/// The object in the file, and an empty one, with the file marked, where there is none. As the host does, it takes a
/// byte-order mark, comments, bytes that are not UTF-8, the first of equal names, and anything behind the object.
nlohmann::json ReadObject(FileReport& file);

}  // namespace doctor
