#include "doctor/child/child.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <exception>
#include <string_view>
#include <utility>

#include "doctor/child/answer.h"
#include "doctor/child/shared_text.h"
#include "foundation/file_descriptor.h"

namespace doctor {
namespace {

using tov::posix::FileDescriptor;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kLongestOutput = std::size_t{64} * 1024;
constexpr int kPatience = 10;  // Milliseconds.
constexpr auto kLongWait = std::chrono::seconds(1);

struct Pipe {
  FileDescriptor read = FileDescriptor();
  FileDescriptor write = FileDescriptor();
};

// The same file under a number that is not a standard stream's: where one of those is closed, a pipe would take its
// place and be replaced in the child.
FileDescriptor AboveStandardStreams(FileDescriptor descriptor) {
  return descriptor.Get() > STDERR_FILENO
             ? std::move(descriptor)
             : FileDescriptor(::fcntl(descriptor.Get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

// Closed ends when there is none to be had.
Pipe MakePipe() {
  std::array<int, 2> ends{-1, -1};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
    return {};
  }
  FileDescriptor read(ends[0]);
  FileDescriptor write(ends[1]);
  return {AboveStandardStreams(std::move(read)), AboveStandardStreams(std::move(write))};
}

std::string DoWork(const std::function<Answer()>& work) {
  try {
    return Encode({ChildEnd::kFinished, work()});
  } catch (const std::exception& failure) {
    const char* what = failure.what();
    return Encode({ChildEnd::kThrew, {what != nullptr ? what : ""}});
  } catch (...) {
    return Encode({ChildEnd::kThrewUnknown, {}});
  }
}

// What may not be thrown out of it: the parent's code would go on in the child.
[[noreturn]] void BeTheChild(const std::function<Answer()>& work, SharedText& answer, Pipe& output) noexcept {
  // Whoever writes to a pipe that nobody reads any more must learn of it.
  output.read.Close();
  // A session of its own has no terminal that a library could open and set up otherwise.
  ::setsid();
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  static_cast<void>(std::signal(SIGXFSZ, SIG_DFL));  // As in a launch, whatever this program does about it.
  const rlimit noCore{0, 0};
  ::setrlimit(RLIMIT_CORE, &noCore);
  const FileDescriptor nothing(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  ::dup2(nothing.Get(), STDIN_FILENO);
  ::dup2(output.write.Get(), STDOUT_FILENO);
  ::dup2(output.write.Get(), STDERR_FILENO);
  answer.Write(DoWork(work));
  ::_exit(0);
}

// Reads what there is; false at the end.
bool ReadSome(const FileDescriptor& from, std::string& into) {
  std::array<char, 4096> buffer{};
  const ssize_t count = ::read(from.Get(), buffer.data(), buffer.size());
  if (count > 0) {
    into.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR));
}

// Why something ended is said last.
void KeepTheEnd(std::string& text) {
  text.erase(0, text.size() - std::min(text.size(), kLongestOutput));
}

// What is left in a pipe; not for ever, as a process that left the child's group may go on writing.
void Drain(const FileDescriptor& from, std::string& into) {
  const std::size_t longest = into.size() + kLongestOutput;
  pollfd ready{from.Get(), POLLIN, 0};
  while (into.size() < longest && from.IsOpen() && ::poll(&ready, 1, 0) > 0 && ReadSome(from, into)) {
  }
}

bool HasEnded(pid_t process) {
  siginfo_t info{};
  return ::waitid(P_PID, static_cast<id_t>(process), &info, WEXITED | WNOHANG | WNOWAIT) != 0 || info.si_pid != 0;
}

// At most an hour, which a poll takes in any case.
int MillisecondsTo(Clock::time_point deadline) {
  constexpr std::chrono::milliseconds kNow{0};
  constexpr std::chrono::milliseconds kMost = std::chrono::hours(1);
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
  return static_cast<int>(std::clamp(left, kNow, kMost).count());
}

// Rings once, when its time has come.
class Alarm {
 public:
  Alarm(Clock::time_point time, std::function<void()> ring) : time_(time), ring_(std::move(ring)) {}

  void RingInTime() {
    if (ring_ && MillisecondsTo(time_) == 0) {
      std::exchange(ring_, nullptr)();
    }
  }

  // The earlier of the deadline and its own time.
  Clock::time_point Next(Clock::time_point deadline) const { return ring_ ? std::min(time_, deadline) : deadline; }

 private:
  Clock::time_point time_;
  std::function<void()> ring_;
};

// The parent's side of a child that runs.
struct Conversation {
  pid_t process;
  FileDescriptor output;
  std::string text = {};
};

// Collects what it writes until the child has ended. False when the deadline comes first.
bool Listen(Conversation& with, Clock::time_point deadline, Alarm& alarm) {
  // Kernels before 5.3 have none; the child is then asked every few milliseconds.
  const FileDescriptor child(static_cast<int>(::syscall(SYS_pidfd_open, with.process, 0)));
  while (!HasEnded(with.process)) {
    alarm.RingInTime();
    if (MillisecondsTo(deadline) == 0) {
      return false;
    }
    const int left = MillisecondsTo(alarm.Next(deadline));
    // A closed end is -1, which poll passes over.
    std::array<pollfd, 2> ready{pollfd{child.Get(), POLLIN, 0}, pollfd{with.output.Get(), POLLIN, 0}};
    if (::poll(ready.data(), ready.size(), child.IsOpen() ? left : std::min(left, kPatience)) <= 0) {
      continue;
    }
    if (ready[1].revents != 0 && !ReadSome(with.output, with.text)) {
      with.output.Close();
    }
    KeepTheEnd(with.text);
  }
  return true;
}

// How it ended and what it said; a child that exited without an answer exited on its own.
void TakeAnswer(std::string_view bytes, int exitStatus, ChildResult& result) {
  auto work = Decode(bytes);
  if (!work) {
    result.end = ChildEnd::kExited;
    result.code = exitStatus;
    return;
  }
  result.end = work->end;
  if (work->end == ChildEnd::kFinished) {
    result.answer = std::move(work->texts);
  } else if (!work->texts.empty()) {
    result.message = work->texts.front();
  }
}

ChildResult NotStarted() {
  return {ChildEnd::kNotStarted, errno};
}

}  // namespace

ChildResult RunInChild(const std::function<Answer()>& work, std::chrono::milliseconds limit,
                       std::function<void()> takesLong) {
  SharedText answer;
  Pipe output = MakePipe();
  if (!answer.IsThere() || !output.read.IsOpen()) {
    return NotStarted();
  }
  const Clock::time_point start = Clock::now();
  const pid_t process = ::fork();
  if (process < 0) {
    return NotStarted();
  }
  if (process == 0) {
    BeTheChild(work, answer, output);
  }
  output.write.Close();

  Conversation child{process, std::move(output.read)};
  Alarm alarm(start + kLongWait, std::move(takesLong));
  const bool ended = Listen(child, start + limit, alarm);
  ::kill(-process, SIGKILL);  // What it may have started, too.
  ::kill(process, SIGKILL);
  Drain(child.output, child.text);
  int status = 0;
  ::waitpid(process, &status, 0);
  ChildResult result{ChildEnd::kTimedOut};
  KeepTheEnd(child.text);
  result.output = std::move(child.text);
  result.limit = limit;
  if (ended && WIFSIGNALED(status)) {
    result.end = ChildEnd::kCrashed;
    result.code = WTERMSIG(status);
  } else if (ended) {
    TakeAnswer(answer.Read(), WEXITSTATUS(status), result);
  }
  return result;
}

}  // namespace doctor
