// Doing in a child process what may end the process that does it.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace doctor {

/// What a child's work found: texts without NULs. What is longer than `SharedText::kLongest` in all is cut short.
using Answer = std::vector<std::string>;

enum class ChildEnd {
  kFinished,      ///< The work returned.
  kThrew,         ///< It threw a `std::exception`.
  kThrewUnknown,  ///< It threw something else.
  kExited,        ///< The process exited on its own.
  kCrashed,       ///< A signal ended it.
  kTimedOut,      ///< It was ended at the time limit.
  kNotStarted,    ///< There was no child.
};

struct ChildResult {
  ChildEnd end = ChildEnd::kNotStarted;
  int code = 0;                          ///< Exit status, signal, or errno of what could not be started.
  Answer answer = {};                    ///< Only when finished.
  std::string message = {};              ///< What was thrown, in its own words.
  std::string output = {};               ///< What it wrote to standard output and error, the last 64 KiB of it.
  std::chrono::milliseconds limit = {};  ///< How long it was given.
};

/// Runs the work in a child that reads nothing, has no terminal, dumps no core and does not outlive this process. Its
/// answer comes whatever descriptors the work closes. Waits for its end or for the limit, whichever comes first.
/// `takesLong` is called once when that takes more than about a second.
ChildResult RunInChild(const std::function<Answer()>& work, std::chrono::milliseconds limit,
                       std::function<void()> takesLong = {});

}  // namespace doctor
