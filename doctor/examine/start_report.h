// Whether the runtime starts for the application, and which of the files that it needs are broken.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "doctor/examine/broken_file.h"
#include "doctor/examine/machine/surroundings.h"
#include "doctor/examine/start_probe.h"

namespace doctor {

struct StartReport {
  StartProbe probe = {};
  std::vector<BrokenFile> broken = {};  ///< Those that are needed first.
  Surroundings surroundings = {};
  /// The options of the application's configuration that limit or replace the collector, with their values.
  std::vector<std::pair<std::string, std::string>> collector_options = {};
  std::optional<bool> has_icu = {};  ///< Whether ICU is there; empty where it is not needed, or nothing has started.

  /// The broken file because of which the application is not reached; null when there is none. Of a start that has
  /// failed only a file that starting takes can be the cause.
  const BrokenFile* Decisive() const;

  /// The first broken file that the application's own code names although it is reached; null when there is none.
  const BrokenFile* Named() const;
};

/// Starts the runtime in a child.
using StartProber = std::function<StartProbe()>;

/// Starts the runtime, and reads `assembly` and the `assemblies` that the runtime is to know, parted by colons, with
/// the libraries beside them. Where these are not known, no file is looked at.
StartReport ExamineStart(const std::string& assembly, const std::string& assemblies, const StartProber& prober);

}  // namespace doctor
