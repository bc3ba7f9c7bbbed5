// A deps.json: the files of an application or of a framework, as the host reads it.
#pragma once

#include <string>

#include "doctor/examine/config/json_file.h"

namespace doctor {

struct Dependencies {
  FileReport file = {};
  /// The member that the host reads without looking whether it is there, which ends the process: "runtimeTarget",
  /// "sha512 of app/1.0.0". Empty where nothing is wanting.
  std::string wanting = {};
};

Dependencies ReadDependencies(const std::string& path);

}  // namespace doctor
