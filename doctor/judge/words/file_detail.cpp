#include "doctor/judge/words/file_detail.h"

#include <cstring>

namespace doctor {

std::string Detail(const FileReport& file) {
  if (file.state == FileState::kPresent) {
    return {};
  }
  if (file.state == FileState::kMalformed) {
    return file.line > 0 ? "it is not JSON, line " + std::to_string(file.line) : "it does not hold a JSON object";
  }
  return file.error != 0 ? std::strerror(file.error) : "it is not a regular file";
}

}  // namespace doctor
