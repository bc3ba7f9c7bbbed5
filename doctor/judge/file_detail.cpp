#include "doctor/judge/file_detail.h"

#include <cstring>

namespace doctor {

std::string Detail(const FileReport& file) {
  if (file.state == FileState::kPresent) {
    return {};
  }
  if (file.state == FileState::kMalformed) {
    return "it is no JSON object";
  }
  return file.error != 0 ? std::strerror(file.error) : "it is no regular file";
}

}  // namespace doctor
