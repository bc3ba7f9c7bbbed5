#include "doctor/judge/start_cause.h"

#include <array>
#include <cstdlib>

#include "doctor/child/child.h"
#include "doctor/child/signal_name.h"
#include "doctor/examine/broken_file.h"
#include "doctor/examine/machine/surroundings.h"
#include "doctor/examine/start_probe.h"
#include "doctor/judge/findings.h"
#include "doctor/judge/near_misses/broken_file_clue.h"
#include "doctor/judge/near_misses/checks.h"
#include "doctor/judge/words/status_names.h"
#include "doctor/judge/words/text.h"
#include "doctor/judge/words/time_limit.h"

namespace doctor {
namespace {

constexpr std::uint64_t kKibibyte = 1024;
constexpr std::uint64_t kMebibyte = 1024 * kKibibyte;
constexpr std::uint64_t kLittleAddressSpace = 512 * kMebibyte;
constexpr std::uint64_t kLittleMemory = 64 * kMebibyte;
constexpr std::uint64_t kLittleFile = 64 * kMebibyte;
constexpr std::uint64_t kHardlyAFile = 2 * kMebibyte;
constexpr std::uint64_t kLittleData = 64 * kMebibyte;
constexpr std::uint64_t kLittleStack = 128 * kKibibyte;
constexpr std::uint64_t kFewFiles = 64;

// Results of the runtime that say what kind of thing was wanting.
constexpr std::uint32_t kOutOfMemory = 0x8007000e;
constexpr std::uint32_t kModuleNotFound = 0x8007007e;
constexpr std::uint32_t kNoThread = 0x80070008;  // Not enough memory, it says; so it does of a thread that is refused.
constexpr std::string_view kResultWords = "HRESULT: ";

// The host gives a status of its own, and the runtime's result in its words only; 0 where there is none.
std::uint32_t ResultInWords(const StartProbe& probe) {
  const std::string words = probe.child.output + probe.host_text;
  const auto at = words.rfind(kResultWords);
  return at == std::string::npos
             ? 0
             : static_cast<std::uint32_t>(std::strtoul(words.c_str() + at + kResultWords.size(), nullptr, 16));
}

bool EndedWith(const StartReport& start, std::uint32_t result) {
  return ResultInWords(start.probe) == result;
}

// The results from 0x80132000 on are the collector's own, of what it is configured with.
bool CollectorHasFailed(const StartReport& start) {
  constexpr std::uint32_t kFamily = 0xffffff00;
  return EndedWith(start, kOutOfMemory) || EndedWith(start, kModuleNotFound) ||
         (ResultInWords(start.probe) & kFamily) == 0x80132000;
}

std::optional<Warning> BrokenFileCause(const StartReport& start) {
  const BrokenFile* file = start.Decisive();
  if (file == nullptr) {
    return std::nullopt;
  }
  return Worded(Finding::kRuntimeFileBroken, AtBrokenFile(*file));
}

std::optional<Warning> MemoryRightsCause(const StartReport& start) {
  return start.surroundings.may_execute_written_memory ? std::nullopt
                                                       : std::optional(Worded(Finding::kMemoryNotExecutable, {}));
}

std::optional<Warning> MemoryFilesCause(const StartReport& start) {
  return start.surroundings.has_memory_files ? std::nullopt : std::optional(Worded(Finding::kNoMemoryFiles, {}));
}

using Named = std::pair<std::string, std::string>;

// Which of several is at fault cannot be seen from outside.
Warning AboutCollector(Finding finding, const std::vector<Named>& variables) {
  std::string settings;
  std::string names;
  for (const auto& [name, value] : variables) {
    settings += (settings.empty() ? "" : ", ") + name + "=" + Printable(value);
    names += (names.empty() ? "" : " ") + name;
  }
  return Worded(finding, {variables.front().first, {{"settings", settings}, {"variables", names}}});
}

// The runtime says so itself, in one sentence or another.
std::optional<Warning> IcuCause(const StartReport& start) {
  const std::string& words = start.probe.child.output;
  return words.find("ICU") != std::string::npos || words.find("libicu") != std::string::npos
             ? std::optional(
                   Worded(Finding::kNoIcu, {{}, {{"sentence", "ICU, which the application needs, is missing"}}}))
             : std::nullopt;
}

// A variable that someone has set explains what the collector lacks better than any limit.
std::optional<Warning> CollectorVariableCause(const StartReport& start) {
  const auto& variables = start.surroundings.collector_variables;
  return variables.empty() || !CollectorHasFailed(start)
             ? std::nullopt
             : std::optional(AboutCollector(Finding::kCollectorVariable, variables));
}

std::optional<Warning> CollectorOptionCause(const StartReport& start) {
  return start.collector_options.empty() || !CollectorHasFailed(start)
             ? std::nullopt
             : std::optional(AboutCollector(Finding::kCollectorOption, start.collector_options));
}

std::optional<Warning> CompilerVariableCause(const StartReport& start) {
  const auto& variables = start.surroundings.compiler_variables;
  if (variables.empty() || start.probe.child.end != ChildEnd::kCrashed) {
    return std::nullopt;
  }
  const auto& [name, value] = variables.front();
  return Worded(Finding::kCompilerVariable, {name, {{"variable", name}, {"value", Printable(value)}}});
}

std::optional<Warning> ThreadsCause(const StartReport& start) {
  return EndedWith(start, kNoThread) ? std::optional(Worded(Finding::kNoThreads, {})) : std::nullopt;
}

Warning Limited(Finding finding, const std::string& limit) {
  return Worded(finding, {{}, {{"limit", limit}}});
}

std::string Size(std::uint64_t bytes) {
  return bytes < kKibibyte   ? std::to_string(bytes) + " bytes"
         : bytes < kMebibyte ? std::to_string(bytes / kKibibyte) + " KiB"
                             : std::to_string(bytes / kMebibyte) + " MiB";
}

std::optional<Warning> AddressSpaceCause(const StartReport& start) {
  const auto& limit = start.surroundings.address_space;
  if (!limit || !(EndedWith(start, kOutOfMemory) || *limit < kLittleAddressSpace)) {
    return std::nullopt;
  }
  return Limited(Finding::kAddressSpaceLimited, Size(*limit));
}

// .NET keeps its code in a file in memory. With very little it reports other failures, or dies.
std::optional<Warning> FileSizeCause(const StartReport& start) {
  const auto& limit = start.surroundings.file_size;
  if (!limit || *limit >= (EndedWith(start, kOutOfMemory) ? kLittleFile : kHardlyAFile)) {
    return std::nullopt;
  }
  return Limited(Finding::kFileSizeLimited, Size(*limit));
}

std::optional<Warning> DataCause(const StartReport& start) {
  const auto& limit = start.surroundings.data;
  return limit && *limit < kLittleData ? std::optional(Limited(Finding::kDataLimited, Size(*limit))) : std::nullopt;
}

std::optional<Warning> StackCause(const StartReport& start) {
  const auto& limit = start.surroundings.stack;
  return limit && *limit < kLittleStack ? std::optional(Limited(Finding::kStackLimited, Size(*limit))) : std::nullopt;
}

std::optional<Warning> OpenFilesCause(const StartReport& start) {
  const auto& limit = start.surroundings.open_files;
  if (!limit || *limit >= kFewFiles) {
    return std::nullopt;
  }
  return Limited(Finding::kOpenFilesLimited, std::to_string(*limit));
}

std::optional<Warning> GroupMemoryCause(const StartReport& start) {
  const auto& limit = start.surroundings.group_memory;
  if (!limit || !(EndedWith(start, kOutOfMemory) || *limit < kLittleMemory)) {
    return std::nullopt;
  }
  return Limited(Finding::kGroupMemoryLimited, Size(*limit));
}

std::string InWords(std::int32_t result) {
  const std::string_view words = StatusWords(result);
  return (words.empty() ? " (" : ": " + std::string(words) + " (") + Hex(result) + ")";
}

std::int32_t KnownResult(const StartProbe& probe) {
  const std::uint32_t result = ResultInWords(probe);
  return result != 0 ? static_cast<std::int32_t>(result) : probe.result;
}

std::string ResultOf(const StartProbe& probe) {
  return probe.child.end == ChildEnd::kCrashed    ? " (" + SignalName(probe.child.code) + ")"
         : probe.child.end == ChildEnd::kFinished ? InWords(KnownResult(probe))
                                                  : "";
}

// What the runtime writes itself says more than what the host makes of it.
Warning UnknownCause(const StartReport& start) {
  const StartProbe& probe = start.probe;
  const std::string words = LastLine(probe.child.output.empty() ? probe.host_text : probe.child.output);
  return Worded(Finding::kRuntimeNotStarted,
                {{}, {{"result", ResultOf(probe)}, {"words", words.empty() ? "" : "It says: " + Printable(words)}}});
}

// The first that fits is the cause of a start that fails.
constexpr auto kCauses = std::to_array<std::optional<Warning> (*)(const StartReport&)>({
    BrokenFileCause,
    IcuCause,
    MemoryRightsCause,
    MemoryFilesCause,
    CompilerVariableCause,
    CollectorVariableCause,
    CollectorOptionCause,
    ThreadsCause,
    FileSizeCause,
    AddressSpaceCause,
    DataCause,
    StackCause,
    OpenFilesCause,
    GroupMemoryCause,
});

}  // namespace

std::optional<Warning> CauseOf(const StartReport& start) {
  if (!start.probe.HasFailed()) {
    return BrokenFileCause(start);
  }
  if (start.probe.child.end == ChildEnd::kTimedOut) {
    return Worded(Finding::kStartNotFinished, {{}, LimitValues(start.probe.child)});
  }
  for (const auto& look : kCauses) {
    if (auto cause = look(start)) {
      return cause;
    }
  }
  return UnknownCause(start);
}

}  // namespace doctor
