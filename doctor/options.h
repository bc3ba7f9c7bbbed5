// The doctor's command line.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <variant>

#include "doctor/child/patience.h"

namespace doctor {

enum class Color { kAuto, kAlways, kNever };

struct Options {
  bool json = false;
  bool probe = true;
  bool verbose = false;
  Color color = Color::kAuto;
  std::chrono::milliseconds time_limit = kTimeLimit;
  std::optional<std::string> log;
  std::optional<std::string> report;
  std::optional<std::string> settings;
  std::optional<std::string> root;
  std::optional<std::string> user;
  std::optional<std::string> explain;
};

/// What ends the program before it begins: text to print and a status to end with.
struct Refusal {
  std::string text;
  bool is_error;  ///< False for help and version, which go to standard output and end with 0.
};

/// The options, or why there are none.
std::variant<Options, Refusal> ParseOptions(int argc, const char* const* argv);

}  // namespace doctor
