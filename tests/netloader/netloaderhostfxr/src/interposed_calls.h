// Calls into the C library that this executable answers itself: counted, or with an answer that a test has chosen.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace tests {

/// Counts how often files are opened with `open` and read with `pread` while it lives.
class CountedReads {
 public:
  CountedReads();
  [[nodiscard]] int Opens() const;
  [[nodiscard]] int Reads() const;
};

/// The flags of the last `dlopen`.
[[nodiscard]] int LastOpenFlags();

/// Lets the next `succeeding` calls of `pread` pass and the one after them fail with `error`.
class FailingRead {
 public:
  explicit FailingRead(int error, int succeeding = 0);
  ~FailingRead();
  FailingRead(const FailingRead&) = delete;
  FailingRead& operator=(const FailingRead&) = delete;
};

/// Lets the next allocation of exactly `size` bytes fail.
class FailingAllocation {
 public:
  explicit FailingAllocation(std::size_t size);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
};

/// Calls `look` with the path each time a file's status is asked for, before it is answered.
class WatchedStatus {
 public:
  explicit WatchedStatus(std::function<void(const std::string& path)> look);
  ~WatchedStatus();
  WatchedStatus(const WatchedStatus&) = delete;
  WatchedStatus& operator=(const WatchedStatus&) = delete;
};

/// Calls `look` each time a library is about to be closed.
class WatchedClosing {
 public:
  explicit WatchedClosing(std::function<void()> look);
  ~WatchedClosing();
  WatchedClosing(const WatchedClosing&) = delete;
  WatchedClosing& operator=(const WatchedClosing&) = delete;
};

/// Answers the next calls of `dlerror` with these texts, then lets the dynamic loader answer again.
class ScriptedLoaderErrors {
 public:
  explicit ScriptedLoaderErrors(std::vector<std::string> texts);
  ~ScriptedLoaderErrors();
  ScriptedLoaderErrors(const ScriptedLoaderErrors&) = delete;
  ScriptedLoaderErrors& operator=(const ScriptedLoaderErrors&) = delete;
};

}  // namespace tests
