// Why a version is not good, in words.
#pragma once

#include <string>

#include "doctor/child/child.h"
#include "doctor/examine/runtime_report.h"
#include "doctor/judge/words/named.h"

namespace doctor {

/// `meaning` is for the documents; `detail` is the sentence of a report, with places for what was found.
struct VersionReasonText {
  VersionReason value;
  std::string_view code;
  std::string_view meaning;
  std::string_view detail;
};

inline constexpr auto kVersionReasons = std::to_array<VersionReasonText>({
    {VersionReason::kNotAFolder, "not-a-folder", "it went away while it was looked at", "is not a folder any more"},
    {VersionReason::kNotUtf8, "not-utf8", "folders whose names are not UTF-8, together and without a name",
     "names that are not UTF-8 are passed over"},
    {VersionReason::kWrongPrefix, "wrong-prefix", "its name does not begin with `6.0.`",
     "its name does not begin with {prefix}"},
    {VersionReason::kNoLibrary, "no-library", "there is no `libhostfxr.so` in it", "{library}: {result}"},
    {VersionReason::kLibraryIsLink, "library-is-link", "`libhostfxr.so` is a symbolic link",
     "{library} is a symbolic link"},
    {VersionReason::kLibraryIsNoFile, "library-is-no-file", "`libhostfxr.so` is a folder or another thing",
     "{library} is not a regular file"},
    {VersionReason::kRelativePath, "relative-path", "the root is relative, and nothing is loaded from one",
     "its path is relative, and only absolute ones are loaded"},
    {VersionReason::kStringToken, "string-token", "its path holds a word that the dynamic loader replaces", "{words}"},
    {VersionReason::kUnreadable, "unreadable", "the library cannot be opened or read", "{words}"},
    {VersionReason::kNotElf, "not-elf", "the library is empty, text or in another format", "{words}"},
    {VersionReason::kOtherMachine, "other-machine", "the library is for another machine or word size", "{words}"},
    {VersionReason::kNotShared, "not-shared", "the file is a program or an object file, not a library", "{words}"},
    {VersionReason::kCutShort, "cut-short", "the library is shorter than its headers say", "{words}"},
    {VersionReason::kMalformed, "malformed", "the library's headers contradict each other", "{words}"},
    {VersionReason::kLoadFailed, "load-failed", "the dynamic loader refuses it; `detail` has its words", "{words}"},
    {VersionReason::kFunctionMissing, "function-missing", "it lacks one of the three functions of a host",
     "lacks the function {function}"},
    {VersionReason::kThrew, "threw", "it threw an exception while it was loaded: a launch ends there",
     "threw an exception while loading{said}"},
    {VersionReason::kExited, "exited", "it ended the process while it was loaded: a launch ends there",
     "ended the process while loading, with status {status}{wrote}"},
    {VersionReason::kCrashed, "crashed", "it crashed while it was loaded: a launch ends there",
     "crashed while loading: {signal}{wrote}"},
    {VersionReason::kTimedOut, "timed-out",
     "it was not loaded within the time limit; what a launch would do is not known",
     "did not come back from loading within the time limit{wrote}"},
});
static_assert(IsComplete(kVersionReasons, VersionReason::kTimedOut));

/// The beginning of what a child wrote, without line ends behind it; raw bytes.
std::string LastWords(const ChildResult& child);

/// The name of the reason; empty for a good version.
std::string_view ReasonCode(const VersionReport& version);

/// The reason as a sentence about the version, raw bytes; empty for a good version.
std::string Detail(const VersionReport& version);

}  // namespace doctor
