// What grellin_doctor says of a launch, and what the launcher then does.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tests/support/doctor.h"
#include "tests/support/launcher.h"
#include "tests/support/opening.h"

namespace tests {

/// How the doctor and the launcher are started, alike.
struct Start {
  std::filesystem::path doctor = DoctorFile();
  std::filesystem::path launcher = LauncherFile();
  std::filesystem::path folder = "/";
  std::map<std::string, std::string> variables = {};
  std::vector<std::function<void()>> steps = {};  ///< What each does to itself first, as Command::Before() has it.
  bool reads_everything = true;
  bool hosts_record = true;                    ///< False where a host may be too damaged to record what happens in it.
  std::chrono::milliseconds patience{60'000};  ///< How long a launch may take before it counts as hanging.
};

/// A prediction, and where the launch differed from it.
struct Comparison {
  std::string outcome;     ///< The predicted outcome: "runs", "status-255", ...
  std::string decisive;    ///< The version that decides, "" for none.
  std::string difference;  ///< For people; empty when the launch was as predicted.
  Opening opening = {};
};

/// Asks the doctor, then launches; the machine must be the same to both. What stand-in hosts record of the launch stays
/// in `host`. The doctor's host must have been given exactly what the launcher's was, and must not have run anything.
[[nodiscard]] Comparison Compare(StandInHost& host, const Start& start = {});

}  // namespace tests
