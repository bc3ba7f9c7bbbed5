// The calls below the folder walk. A program that links this has its own, which do what the system's do until a test
// changes that.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tests {

enum class SystemCall { kOpenat, kFdopendir, kReaddir, kStat };

/// While it lives, one call fails with `error`: the one that follows `successes` others of its kind, made since.
class FailingCall {
 public:
  FailingCall(SystemCall call, std::size_t successes, int error);
  ~FailingCall();
  FailingCall(const FailingCall&) = delete;
  FailingCall& operator=(const FailingCall&) = delete;

  [[nodiscard]] bool HasFailed() const;
};

/// Counts the calls of one kind, and keeps the paths of those that have one, from its construction on.
class CountedCalls {
 public:
  explicit CountedCalls(SystemCall call);
  [[nodiscard]] std::size_t Number() const { return Paths().size(); }
  [[nodiscard]] std::vector<std::string> Paths() const;

 private:
  SystemCall call_;
  std::size_t before_;
};

}  // namespace tests
