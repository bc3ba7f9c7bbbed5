#include "tests/support/process.h"

#include <linux/capability.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ostream>
#include <string_view>
#include <system_error>
#include <utility>

namespace tests {

namespace {

constexpr unsigned int kCloseOnExec = 1U << 2;  // CLOSE_RANGE_CLOEXEC, which headers have for a few years only.

// A nameless file in memory. Unlike a pipe it holds any amount while nobody reads.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view bytes = {}) : descriptor_(::memfd_create("test", MFD_CLOEXEC)) {
    if (descriptor_ < 0) {
      throw std::system_error(errno, std::generic_category(), "memfd_create");
    }
    while (!bytes.empty()) {
      const auto written = ::write(descriptor_, bytes.data(), bytes.size());
      if (written <= 0) {
        throw std::system_error(errno, std::generic_category(), "write");
      }
      bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    ::lseek(descriptor_, 0, SEEK_SET);
  }
  ~MemoryFile() { ::close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  [[nodiscard]] int Descriptor() const { return descriptor_; }

  [[nodiscard]] std::string Content() const {
    std::string content;
    char buffer[4096];
    ::lseek(descriptor_, 0, SEEK_SET);
    for (ssize_t got; (got = ::read(descriptor_, buffer, sizeof buffer)) > 0;) {
      content.append(buffer, static_cast<std::size_t>(got));
    }
    return content;
  }

 private:
  int descriptor_;
};

// The two ends of a connection: one for the program's process until it becomes the program, one for the watcher.
class SocketPair {
 public:
  SocketPair() {
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_.data()) != 0) {
      throw std::system_error(errno, std::generic_category(), "socketpair");
    }
  }
  ~SocketPair() {
    ::close(ends_[0]);
    ::close(ends_[1]);
  }
  SocketPair(const SocketPair&) = delete;
  SocketPair& operator=(const SocketPair&) = delete;

  [[nodiscard]] int Program() const { return ends_[1]; }
  // The watcher's end. The other one is given up here, so that nothing comes once the program's process has none.
  [[nodiscard]] int Watcher() {
    ::close(std::exchange(ends_[1], -1));
    return ends_[0];
  }

 private:
  std::array<int, 2> ends_{};
};

// Waits for the end of a process.
class EndOf {
 public:
  explicit EndOf(pid_t process) : descriptor_(static_cast<int>(::syscall(SYS_pidfd_open, process, 0))) {}
  ~EndOf() { ::close(descriptor_); }
  EndOf(const EndOf&) = delete;
  EndOf& operator=(const EndOf&) = delete;

  // False when the time was up first.
  [[nodiscard]] bool Wait(std::chrono::milliseconds timeout) const {
    pollfd ended{descriptor_, POLLIN, 0};
    return ::poll(&ended, 1, static_cast<int>(timeout.count())) > 0;
  }

  // The same while every call is decided on.
  [[nodiscard]] bool Wait(std::chrono::milliseconds timeout, const CallWatch& watch, const CallWatcher& watcher) const {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (true) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
      std::array<pollfd, 2> either{{{watch.Descriptor(), POLLIN, 0}, {descriptor_, POLLIN, 0}}};
      if (left.count() <= 0 || ::poll(either.data(), either.size(), static_cast<int>(left.count())) <= 0) {
        return false;
      }
      if ((either[0].revents & POLLIN) != 0) {
        watch.Serve(watcher);
      } else if (either[1].revents != 0) {
        return true;
      }
    }
  }

 private:
  int descriptor_;
};

std::chrono::microseconds Duration(const timeval& time) {
  return std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec);
}

std::vector<char*> Pointers(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (const std::string& text : texts) {
    pointers.push_back(const_cast<char*>(text.c_str()));
  }
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

Command::Command(std::filesystem::path program) : program_(std::move(program)), arguments_{program_} {
  for (const char* name : {"ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "GCOV_PREFIX", "GCOV_PREFIX_STRIP",
                           "LLVM_PROFILE_FILE", "LD_LIBRARY_PATH"}) {
    if (const char* value = std::getenv(name)) {
      environment_[name] = value;
    }
  }
}

Command& Command::Arguments(std::vector<std::string> arguments) {
  arguments_.resize(1);
  arguments_.insert(arguments_.end(), std::move_iterator(arguments.begin()), std::move_iterator(arguments.end()));
  return *this;
}

Command& Command::Name(std::string name) {
  arguments_.front() = std::move(name);
  return *this;
}

Command& Command::WithoutName() {
  arguments_.clear();
  return *this;
}

Command& Command::Variable(const std::string& name, const std::string& value) {
  environment_[name] = value;
  return *this;
}

Command& Command::Variables(const std::map<std::string, std::string>& variables) {
  for (const auto& [name, value] : variables) {
    Variable(name, value);
  }
  return *this;
}

Command& Command::LeavesSignalsAlone() {
  environment_["ASAN_OPTIONS"] += ":handle_segv=0:handle_sigbus=0:handle_abort=0";
  return *this;
}

Command& Command::Input(std::string bytes) {
  input_ = std::move(bytes);
  return *this;
}

Command& Command::Folder(std::filesystem::path folder) {
  folder_ = std::move(folder);
  return *this;
}

Command& Command::WithoutReadingEverything() {
  reads_everything_ = false;
  return *this;
}

Command& Command::Before(std::function<void()> step) {
  steps_.push_back(std::move(step));
  return *this;
}

Command& Command::Watched(CallWatcher watcher) {
  watcher_ = std::move(watcher);
  return *this;
}

Command& Command::Timeout(std::chrono::milliseconds timeout) {
  timeout_ = timeout;
  return *this;
}

// What the new process needs and must not make itself: it shares this one's memory until it becomes the program.
struct Command::Launch {
  MemoryFile in;
  MemoryFile out;
  MemoryFile err;
  SocketPair sockets;
  std::vector<std::string> variables;
  std::vector<char*> arguments;
  std::vector<char*> environment;
};

Outcome Command::Run() const {
  Launch launch{MemoryFile(input_), MemoryFile(), MemoryFile(), {}, {}, Pointers(arguments_), {}};
  for (const auto& [name, value] : environment_) {
    launch.variables.emplace_back(name).append("=").append(value);
  }
  launch.environment = Pointers(launch.variables);

  // An ordinary fork copies the page tables, which takes long in a process that a sanitizer watches; what a step does
  // to its process must not be done to this one.
  const pid_t child = steps_.empty() ? ::vfork() : ::fork();  // NOLINT: it goes on to a program at once.
  if (child < 0) {
    throw std::system_error(errno, std::generic_category(), "vfork");
  }
  if (child == 0) {
    Become(launch);  // NOLINT: system calls only, unless it was forked.
  }

  Outcome outcome;
  outcome.timed_out = !WaitFor(child, launch);
  if (outcome.timed_out) {
    ::kill(child, SIGKILL);
  }
  int ended = 0;
  rusage usage{};
  ::wait4(child, &ended, 0, &usage);
  outcome.processor_time = Duration(usage.ru_utime) + Duration(usage.ru_stime);
  outcome.status = WIFEXITED(ended) ? WEXITSTATUS(ended) : -1;
  outcome.signal = WIFSIGNALED(ended) ? WTERMSIG(ended) : 0;
  outcome.out = launch.out.Content();
  outcome.err = launch.err.Content();
  return outcome;
}

// False when the time was up first.
bool Command::WaitFor(pid_t child, Launch& launch) const {
  const EndOf end(child);
  return watcher_ ? end.Wait(timeout_, CallWatch(launch.sockets.Watcher()), watcher_) : end.Wait(timeout_);
}

// The new process, up to the program it becomes. Programs that abort are an ordinary case here and leave no core.
void Command::Become(const Launch& launch) const {
  ::dup2(launch.in.Descriptor(), STDIN_FILENO);
  ::dup2(launch.out.Descriptor(), STDOUT_FILENO);
  ::dup2(launch.err.Descriptor(), STDERR_FILENO);
  // What the test itself has been started with is none of the program's.
  ::syscall(SYS_close_range, STDERR_FILENO + 1, ~0U, kCloseOnExec);
  const rlimit no_core{0, 0};
  ::setrlimit(RLIMIT_CORE, &no_core);
  if (!reads_everything_) {
    ::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, 0, 0, 0);
    ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH, 0, 0, 0);
  }
  const bool isThere = ::chdir(folder_.c_str()) == 0;
  for (const auto& step : steps_) {
    step();
  }
  if (isThere && (!watcher_ || LetCallsBeWatched(launch.sockets.Program()))) {
    ::execve(program_.c_str(), launch.arguments.data(), launch.environment.data());
  }
  ::_exit(127);
}

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
  stream << "exit status " << outcome.status << ", signal " << outcome.signal;
  if (outcome.timed_out) {
    stream << ", timed out";
  }
  return stream << ", standard output [" << outcome.out << "], standard error [" << outcome.err << "]";
}

std::string WhyCallsCannotBeWatched() {
  try {
    const Outcome outcome = Command("/bin/true").Watched([](const WatchedCall&) { return Decision::Make(); }).Run();
    return outcome.status == 0 ? "" : "a watched program does not work";
  } catch (const std::system_error& error) {
    return error.what();
  }
}

bool IsSanitized() {
#if defined(__SANITIZE_ADDRESS__)
  return true;
#elif defined(__has_feature)
  return __has_feature(address_sanitizer);
#else
  return false;
#endif
}

bool IsInstrumented() {
#ifdef KEEPS_COUNTS
  return true;
#else
  return IsSanitized();
#endif
}

}  // namespace tests
