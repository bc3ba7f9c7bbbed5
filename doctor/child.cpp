#include "doctor/child.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <string_view>
#include <utility>

namespace doctor {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kLongestOutput = 64 * 1024;
constexpr char kEndOfAnswer = '\n';

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~Descriptor() { Close(); }

  int get() const { return descriptor_; }
  bool IsOpen() const { return descriptor_ >= 0; }
  void Close() {
    if (IsOpen()) {
      ::close(std::exchange(descriptor_, -1));
    }
  }

 private:
  int descriptor_ = -1;
};

struct Pipe {
  Descriptor read = Descriptor();
  Descriptor write = Descriptor();
};

// Closed ends when there is none to be had.
Pipe MakePipe() {
  std::array<int, 2> ends{-1, -1};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
    return {};
  }
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

std::string Encode(std::string_view how, const Answer& answer) {
  std::string bytes(how);
  bytes += '\0';
  for (const std::string& text : answer) {
    bytes += text;
    bytes += '\0';
  }
  return bytes += kEndOfAnswer;
}

std::string DoWork(const std::function<Answer()>& work) {
  try {
    return Encode("finished", work());
  } catch (const std::exception& failure) {
    return Encode("threw", {failure.what()});
  } catch (...) {
    return Encode("threw unknown", {});
  }
}

void WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno != EINTR) {
      return;
    }
    bytes.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
  }
}

[[noreturn]] void BeTheChild(const std::function<Answer()>& work, const Pipe& answer, const Pipe& output) {
  ::setpgid(0, 0);
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  const rlimit noCore{0, 0};
  ::setrlimit(RLIMIT_CORE, &noCore);
  const Descriptor nothing(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  ::dup2(nothing.get(), STDIN_FILENO);
  ::dup2(output.write.get(), STDOUT_FILENO);
  ::dup2(output.write.get(), STDERR_FILENO);
  WriteAll(answer.write.get(), DoWork(work));
  ::_exit(0);
}

// Reads what there is; false at the end.
bool ReadSome(const Descriptor& from, std::string& into) {
  std::array<char, 4096> buffer{};
  const ssize_t count = ::read(from.get(), buffer.data(), buffer.size());
  if (count > 0) {
    into.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR));
}

void Drain(Descriptor& from, std::string& into) {
  while (from.IsOpen()) {
    pollfd ready{from.get(), POLLIN, 0};
    if (::poll(&ready, 1, 0) <= 0 || !ReadSome(from, into)) {
      from.Close();
    }
  }
}

int MillisecondsTo(Clock::time_point deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return left > 0 ? static_cast<int>(left) : 0;
}

// Collects both texts until the child has ended. False when the deadline comes first.
bool Listen(const Descriptor& child, Descriptor& answer, std::string& answerText, Descriptor& output,
            std::string& outputText, Clock::time_point deadline) {
  while (true) {
    // A closed end is -1, which poll passes over.
    std::array<pollfd, 3> ready{pollfd{child.get(), POLLIN, 0}, pollfd{answer.get(), POLLIN, 0},
                                pollfd{output.get(), POLLIN, 0}};
    const int count = ::poll(ready.data(), ready.size(), MillisecondsTo(deadline));
    if (count == 0) {
      return false;
    }
    if (ready[0].revents != 0) {
      Drain(answer, answerText);
      Drain(output, outputText);
      return true;
    }
    if (ready[1].revents != 0 && !ReadSome(answer, answerText)) {
      answer.Close();
    }
    if (ready[2].revents != 0 && !ReadSome(output, outputText)) {
      output.Close();
    }
    outputText.resize(std::min(outputText.size(), kLongestOutput));
  }
}

// How it ended and what it said; a child that exited without a whole answer exited on its own.
void Decode(std::string_view bytes, int exitStatus, ChildResult& result) {
  if (!bytes.ends_with(std::string_view("\0\n", 2))) {
    result.end = ChildEnd::kExited;
    result.code = exitStatus;
    return;
  }
  Answer texts;
  bytes.remove_suffix(1);
  for (std::size_t end = 0; !bytes.empty(); bytes.remove_prefix(end + 1)) {
    end = bytes.find('\0');
    texts.emplace_back(bytes.substr(0, end));
  }
  const std::string how = texts.front();
  texts.erase(texts.begin());
  if (how == "finished") {
    result.end = ChildEnd::kFinished;
    result.answer = std::move(texts);
  } else {
    result.end = how == "threw" ? ChildEnd::kThrew : ChildEnd::kThrewUnknown;
    result.message = texts.empty() ? "" : texts.front();
  }
}

ChildResult NotStarted() {
  return {ChildEnd::kNotStarted, errno};
}

}  // namespace

ChildResult RunInChild(const std::function<Answer()>& work, std::chrono::milliseconds limit) {
  Pipe answer = MakePipe();
  Pipe output = MakePipe();
  if (!answer.read.IsOpen() || !output.read.IsOpen()) {
    return NotStarted();
  }
  const Clock::time_point deadline = Clock::now() + limit;
  const pid_t process = ::fork();
  if (process < 0) {
    return NotStarted();
  }
  if (process == 0) {
    BeTheChild(work, answer, output);
  }
  const Descriptor child(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
  answer.write.Close();
  output.write.Close();

  std::string bytes;
  ChildResult result{ChildEnd::kTimedOut};
  const bool ended = Listen(child, answer.read, bytes, output.read, result.output, deadline);
  ::kill(-process, SIGKILL);  // What it may have started, too.
  ::kill(process, SIGKILL);
  int status = 0;
  ::waitpid(process, &status, 0);
  if (ended && WIFSIGNALED(status)) {
    result.end = ChildEnd::kCrashed;
    result.code = WTERMSIG(status);
  } else if (ended) {
    Decode(bytes, WEXITSTATUS(status), result);
  }
  return result;
}

std::string SignalName(int signal) {
  const char* name = ::sigabbrev_np(signal);
  return name != nullptr ? std::string("SIG") + name : "signal " + std::to_string(signal);
}

}  // namespace doctor
