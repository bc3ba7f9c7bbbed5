// Watching the system calls of a program, and deciding what becomes of each.
#pragma once

#include <linux/seccomp.h>
#include <sys/types.h>

#include <array>
#include <cstdint>
#include <functional>
#include <string>

namespace tests {

/// A system call that a program, or a process that it has made, is about to make.
class WatchedCall {
 public:
  explicit WatchedCall(const seccomp_notif& notification);

  [[nodiscard]] pid_t Process() const { return process_; }
  [[nodiscard]] long Number() const { return number_; }
  /// The call's arguments. Pointers are addresses in its process.
  [[nodiscard]] std::uint64_t Argument(std::size_t index) const { return arguments_.at(index); }
  /// The call's name, "" for one that is not in the table of those that launches make.
  [[nodiscard]] std::string Name() const;
  /// The path that it is about, as it is given or as the descriptor that is given was opened; "" without any.
  [[nodiscard]] std::string Path() const;
  /// Whether it is given a path, and not a descriptor.
  [[nodiscard]] bool HasPath() const;

 private:
  [[nodiscard]] std::string TextAt(std::uint64_t address) const;

  pid_t process_;
  long number_;
  std::array<std::uint64_t, 6> arguments_{};
};

/// What becomes of a call.
class Decision {
 public:
  /// The call is made.
  static Decision Make() { return {0, 0, true}; }
  /// It is not made, and fails with that error number.
  static Decision Fail(int error) { return {0, -error, false}; }
  /// It is not made, and returns that.
  static Decision Return(std::int64_t value) { return {value, 0, false}; }

  [[nodiscard]] seccomp_notif_resp AnswerTo(std::uint64_t id) const;

 private:
  Decision(std::int64_t value, int error, bool isMade) : value_(value), error_(error), is_made_(isMade) {}

  std::int64_t value_;
  int error_;
  bool is_made_;
};

/// Asked before each call. What it does on its own is done before the call is made.
using CallWatcher = std::function<Decision(const WatchedCall&)>;

/// Reads for the program what a read or pread would, but at most that many bytes. What the call then returns.
[[nodiscard]] Decision ReadAtMost(const WatchedCall& read, std::size_t size);

/// Has every later call of this process be watched, but those that start a program, and sends what the watcher needs
/// through that socket. Makes system calls only. False when it is not permitted.
[[nodiscard]] bool LetCallsBeWatched(int socket) noexcept;

/// The watcher's end: the calls of one program.
class CallWatch {
 public:
  /// Waits for what LetCallsBeWatched() sends through the other end of the socket; throws when that is closed first.
  explicit CallWatch(int socket);
  ~CallWatch();
  CallWatch(const CallWatch&) = delete;
  CallWatch& operator=(const CallWatch&) = delete;

  /// Ready to be read when there is a call.
  [[nodiscard]] int Descriptor() const { return listener_; }
  /// Asks the watcher about the next call, and has its answer obeyed.
  void Serve(const CallWatcher& watcher) const;

 private:
  int listener_;
};

}  // namespace tests
