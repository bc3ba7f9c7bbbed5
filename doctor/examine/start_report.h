// Whether the runtime starts for the application, and which of the files that it needs are broken.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "doctor/examine/start_probe.h"
#include "doctor/examine/surroundings.h"

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
  bool is_application = false;  ///< Whether it is the application's own assembly.
  std::string detail = {};      ///< "missing", "cut short: ..."
};

struct StartReport {
  StartProbe probe = {};
  std::vector<BrokenFile> broken = {};  ///< Those that are needed first.
  Surroundings surroundings = {};

  /// The broken file because of which the application is not reached; null when there is none. Of a start that has
  /// failed only a file that starting takes can be the cause.
  const BrokenFile* Decisive() const;
};

/// Starts the runtime in a child.
using StartProber = std::function<StartProbe()>;

/// Starts the runtime, and reads `assembly` and the `assemblies` that the runtime is to know, parted by colons, with
/// the libraries beside them. Where these are not known, no file is looked at.
StartReport ExamineStart(const std::string& assembly, const std::string& assemblies, const StartProber& prober);

}  // namespace doctor
