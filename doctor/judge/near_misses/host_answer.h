// What the host's answer says of a finding about the application, and the findings about its frameworks.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "doctor/examine/application_report.h"
#include "doctor/judge/near_misses/checks.h"

namespace doctor {

inline constexpr std::uint32_t kHostLibraryNotLoaded = 0x80008082;
inline constexpr std::uint32_t kHostLibraryMissing = 0x80008083;
inline constexpr std::uint32_t kRuntimeNotFound = 0x80008087;
inline constexpr std::uint32_t kNotResolved = 0x8000808b;
inline constexpr std::uint32_t kInvalidConfig = 0x80008093;
inline constexpr std::uint32_t kFrameworkMissing = 0x80008096;
inline constexpr std::uint32_t kFrameworkIncompatible = 0x8000809c;

/// The answers of the host that something wrong explains.
struct Answers {
  std::vector<std::uint32_t> statuses = {};  ///< Statuses that it gives.
  bool ends_process = false;                 ///< Whether it may end the process instead.
};

/// The clue with `{source}`: the host's status in brackets, or where nobody asked the host, the file that says what is
/// needed. None where the host accepts the application. It may decide only where the host gives one of the answers, or
/// was not asked.
std::optional<Clue> Explaining(const ApplicationReport& report, const Answers& answers, Clue clue);

/// The first framework that the root does not have in a version that serves, with the words for what it has.
std::optional<Clue> MissingFramework(const ApplicationReport& report);

/// Two versions of one framework that do not go together.
std::optional<Clue> ConflictingFrameworks(const ApplicationReport& report);

}  // namespace doctor
