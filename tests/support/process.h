// Starting a program and waiting for what becomes of it.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tests/support/watched_calls.h"

namespace tests {

/// How a program ended, and what it wrote.
struct Outcome {
  int status = -1;  ///< The exit status, or -1 when a signal ended it.
  int signal = 0;   ///< The signal that ended it, or 0.
  bool timed_out = false;
  std::chrono::microseconds processor_time{0};  ///< What it took of the processor, the system's share included.
  std::string out;
  std::string err;
};

/// A program, how it is started, and its one run. Only the three standard streams are open in it.
class Command {
 public:
  explicit Command(std::filesystem::path program);

  /// The arguments after the program's name, which is its path unless Name() says otherwise.
  Command& Arguments(std::vector<std::string> arguments);
  Command& Name(std::string name);
  /// Starts it with no argument at all, not even a name.
  Command& WithoutName();
  /// Adds a variable. The environment is otherwise empty, except for what steers the sanitizers and the coverage.
  Command& Variable(const std::string& name, const std::string& value);
  Command& Variables(const std::map<std::string, std::string>& variables);
  /// What it reads from standard input; nothing unless said.
  Command& Input(std::string bytes);
  /// The folder that it starts in; the test's own unless said.
  Command& Folder(std::filesystem::path folder);
  /// Keeps a sanitizer from turning a signal that ends it, or one of its children, into an exit status.
  Command& LeavesSignalsAlone();
  /// Takes away what lets root read and search everything, so that an unreadable file is unreadable to root, too.
  Command& WithoutReadingEverything();
  /// Done by the new process before it becomes the program, after all that is said above, in the order of the calls.
  Command& Before(std::function<void()> step);
  /// Has every system call of it and of the processes that it makes be decided on, from the program's first on. Run()
  /// then throws where that is not permitted: see WhyCallsCannotBeWatched().
  Command& Watched(CallWatcher watcher);
  /// It is killed after this long; 60 seconds unless said.
  Command& Timeout(std::chrono::milliseconds timeout);

  /// Runs it. Throws std::system_error when no process can be made; a program that cannot be executed ends with
  /// status 127.
  [[nodiscard]] Outcome Run() const;

 private:
  struct Launch;
  [[noreturn]] void Become(const Launch& launch) const;
  [[nodiscard]] bool WaitFor(pid_t child, Launch& launch) const;

  std::filesystem::path program_;
  std::vector<std::string> arguments_;
  std::map<std::string, std::string> environment_;
  std::string input_;
  std::filesystem::path folder_ = ".";
  bool reads_everything_ = true;
  CallWatcher watcher_;
  std::vector<std::function<void()>> steps_;
  std::chrono::milliseconds timeout_{60'000};
};

/// Why Command::Watched() is of no use here; empty when it is.
[[nodiscard]] std::string WhyCallsCannotBeWatched();

/// Whether this is a sanitizer's build.
[[nodiscard]] bool IsSanitized();

/// Whether the programs do more than they would otherwise: under a sanitizer, or as they keep counts for coverage.
[[nodiscard]] bool IsInstrumented();

/// Writes an outcome into a failing test's message.
std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

}  // namespace tests
