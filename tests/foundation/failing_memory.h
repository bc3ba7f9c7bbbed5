// A program that links this has its own operator new, which can be made to fail.
#pragma once

#include <cstddef>

namespace tests {

/// While it lives, one allocation by `new` on this thread fails: the one that follows `successes` others.
class FailingMemory {
 public:
  explicit FailingMemory(std::size_t successes);
  ~FailingMemory();
  FailingMemory(const FailingMemory&) = delete;
  FailingMemory& operator=(const FailingMemory&) = delete;

  /// True once the allocation has failed. False means that the code under test got by with fewer.
  [[nodiscard]] bool HasFailed() const;
};

/// How many allocations this program made by `new`, on any thread.
[[nodiscard]] std::size_t AllocationsMade();

/// How many of them it has not freed yet.
[[nodiscard]] std::size_t AllocationsAlive();

}  // namespace tests
