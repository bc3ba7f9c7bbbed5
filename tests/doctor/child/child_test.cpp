#include "doctor/child/child.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "tests/foundation/open_files.h"
#include "tests/support/temp_folder.h"

namespace {

bool refuses_pidfd = false;
bool refuses_fork = false;

}  // namespace

// In place of the C library's: a system that has no process left.
extern "C" pid_t fork() noexcept {
  if (refuses_fork) {
    errno = EAGAIN;
    return -1;
  }
  return reinterpret_cast<pid_t (*)()>(::dlsym(RTLD_NEXT, "fork"))();
}

// Meanwhile nothing is ended: whoever took -1 for a child would end every process there is.
extern "C" int kill(pid_t process, int signal) noexcept {
  if (refuses_fork) {
    errno = EPERM;
    return -1;
  }
  return reinterpret_cast<int (*)(pid_t, int)>(::dlsym(RTLD_NEXT, "kill"))(process, signal);
}

// In place of the C library's: a kernel that has no pidfd_open.
// Reads more arguments than most calls have, which the address sanitizer would report.
extern "C" __attribute__((no_sanitize("address"))) long syscall(long number, ...) noexcept {
  using Syscall = long (*)(long, ...);
  if (number == SYS_pidfd_open && refuses_pidfd) {
    errno = ENOSYS;
    return -1;
  }
  static const auto real = reinterpret_cast<Syscall>(::dlsym(RTLD_NEXT, "syscall"));
  va_list list;
  va_start(list, number);
  long arguments[6];
  for (long& argument : arguments) {
    argument = va_arg(list, long);
  }
  va_end(list);
  return real(number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4], arguments[5]);
}

namespace doctor {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kLong = 60s;
constexpr auto kShort = 100ms;
constexpr std::size_t kLongestOutput = 65536;

// As a library's crash: no handler of the test's own stands in the way.
Answer DieOf(int signal) {
  ::signal(signal, SIG_DFL);
  ::raise(signal);
  return {};
}

// False when nobody listens.
bool Say(int descriptor, std::string_view words) {
  while (!words.empty()) {
    const ssize_t count = ::write(descriptor, words.data(), words.size());
    if (count <= 0) {
      return false;
    }
    words.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

// For ever, or until nobody listens.
void Talk() {
  while (Say(STDOUT_FILENO, "words ")) {
  }
}

// What somebody who talks like that has said, from any place to any other.
bool IsTalk(std::string_view words) {
  constexpr std::string_view kWords = "words ";
  const std::size_t first = words.empty() ? 0 : kWords.find(words.front());
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (words[i] != kWords[(first + i) % kWords.size()]) {
      return false;
    }
  }
  return true;
}

Answer Hang() {
  for (;;) {
    ::pause();
  }
}

bool HasChildren() {
  return ::waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD;
}

bool IsAlive(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/stat");
  std::string number, name, state;
  return (status >> number >> name >> state) && state != "Z";
}

// So late that only what never happens is missed.
bool Dies(pid_t process) {
  const auto deadline = Clock::now() + kLong;
  while (IsAlive(process) && Clock::now() < deadline) {
    std::this_thread::sleep_for(1ms);
  }
  return !IsAlive(process);
}

TEST(Child, BringsTheAnswerOfItsWork) {
  const Answer answers[] = {{}, {""}, {"one"}, {"one", "", "two\nlines", "\n"}, {std::string(300'000, 'x'), "end"}};
  for (const Answer& answer : answers) {
    const ChildResult result = RunInChild([&] { return answer; }, kLong);

    EXPECT_EQ(result.end, ChildEnd::kFinished);
    EXPECT_EQ(result.answer, answer);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.message, "");
  }
}

TEST(Child, AnAnswerBeyondAllMeasureIsCutShortAndKeepsItsPlaces) {
  const std::size_t tooLong = std::size_t{5} * 1024 * 1024;

  const Answer answer = RunInChild([=] { return Answer{"one", std::string(tooLong, 'x'), "three"}; }, kLong).answer;

  ASSERT_EQ(answer.size(), 3U);
  EXPECT_EQ(answer.at(0), "one");
  EXPECT_GT(answer.at(1).size(), std::size_t{4'000'000});
  EXPECT_LT(answer.at(1).size(), tooLong);
}

TEST(Child, WhateverItClosesItsAnswerComes) {
  const auto closeAll = [] {
    Say(STDOUT_FILENO, "words");
    for (int descriptor = 0; descriptor < 1024; ++descriptor) {
      ::close(descriptor);
    }
  };

  const ChildResult finished = RunInChild(
      [&] {
        closeAll();
        return Answer{"answer"};
      },
      kLong);
  const ChildResult threw = RunInChild(
      [&]() -> Answer {
        closeAll();
        throw std::runtime_error("its words");
      },
      kLong);

  EXPECT_EQ(finished.end, ChildEnd::kFinished);
  EXPECT_EQ(finished.answer, Answer{"answer"});
  EXPECT_EQ(finished.output, "words");
  EXPECT_EQ(threw.end, ChildEnd::kThrew);
  EXPECT_EQ(threw.message, "its words");
}

TEST(Child, HasNoTerminalThatItCouldChange) {
  const auto openTerminal = [] { return Answer{::open("/dev/tty", O_RDWR) < 0 ? ::strerror(errno) : "open"}; };
  int terminal = -1;
  const pid_t process = ::forkpty(&terminal, nullptr, nullptr, nullptr);
  if (process == 0) {
    const bool hasTerminal = ::open("/dev/tty", O_RDWR) >= 0;
    ::_exit(hasTerminal && RunInChild(openTerminal, kLong).answer == Answer{::strerror(ENXIO)} ? 0 : 1);
  }

  int status = 0;
  ::waitpid(process, &status, 0);

  ::close(terminal);
  EXPECT_EQ(status, 0);
}

TEST(Child, WhatItDoesIsItsOwn) {
  int touched = 0;

  const ChildResult result = RunInChild([&] { return Answer{std::to_string(++touched)}; }, kLong);

  EXPECT_EQ(result.answer, Answer{"1"});
  EXPECT_EQ(touched, 0);
}

TEST(Child, ReportsWhatWasThrown) {
  const ChildResult known = RunInChild([]() -> Answer { throw std::runtime_error("its\nwords"); }, kLong);
  const ChildResult unknown = RunInChild([]() -> Answer { throw 42; }, kLong);

  EXPECT_EQ(known.end, ChildEnd::kThrew);
  EXPECT_EQ(known.message, "its\nwords");
  EXPECT_EQ(unknown.end, ChildEnd::kThrewUnknown);
  EXPECT_EQ(unknown.message, "");
}

// A library's exception may have no words.
class Wordless : public std::exception {
 public:
  const char* what() const noexcept override { return nullptr; }
};

TEST(Child, ReportsWhatWasThrownWithoutWords) {
  const ChildResult result = RunInChild([]() -> Answer { throw Wordless(); }, kLong);

  EXPECT_EQ(result.end, ChildEnd::kThrew);
  EXPECT_EQ(result.message, "");
}

TEST(Child, ReportsWithWhatStatusItExited) {
  for (const int status : {0, 1, 17, 255}) {
    const ChildResult result = RunInChild([&]() -> Answer { ::_exit(status); }, kLong);

    EXPECT_EQ(result.end, ChildEnd::kExited);
    EXPECT_EQ(result.code, status);
  }
}

TEST(Child, ReportsWhichSignalEndedIt) {
  for (const int signal : {SIGBUS, SIGSEGV, SIGABRT, SIGKILL}) {
    const ChildResult result = RunInChild([&] { return DieOf(signal); }, kLong);

    EXPECT_EQ(result.end, ChildEnd::kCrashed);
    EXPECT_EQ(result.code, signal);
  }
}

// As a launch does, whatever this process does about it.
TEST(Child, DiesOfAFileThatMayNotGrow) {
  const auto before = ::signal(SIGXFSZ, SIG_IGN);
  const ChildResult result = RunInChild(
      []() -> Answer {
        ::raise(SIGXFSZ);
        return {};
      },
      kLong);
  ::signal(SIGXFSZ, before);

  EXPECT_EQ(result.end, ChildEnd::kCrashed);
  EXPECT_EQ(result.code, SIGXFSZ);
}

TEST(Child, IsEndedAtTheLimit) {
  const auto start = Clock::now();

  const ChildResult result = RunInChild(Hang, kShort);

  EXPECT_EQ(result.end, ChildEnd::kTimedOut);
  EXPECT_GE(Clock::now() - start, kShort);
  EXPECT_FALSE(HasChildren());
}

TEST(Child, IsEndedAtTheLimitEvenWhenItTalksAllTheTime) {
  const auto talk = [] {
    Talk();
    return Answer{"nobody listened"};
  };

  const ChildResult result = RunInChild(talk, kShort);

  EXPECT_EQ(result.end, ChildEnd::kTimedOut);
  EXPECT_LE(result.output.size(), kLongestOutput);
  EXPECT_TRUE(IsTalk(result.output));
}

TEST(Child, ItsWordsAreKeptAsFarAsSixtyFourKibibytes) {
  const auto say = [](std::size_t count) {
    return RunInChild(
        [=] {
          Say(STDOUT_FILENO, std::string(count / 2, 'x'));
          Say(STDERR_FILENO, std::string(count - count / 2, 'x'));
          return Answer{"said"};
        },
        kLong);
  };
  for (const std::size_t count : {std::size_t{0}, std::size_t{5}, kLongestOutput, std::size_t{500'000}}) {
    const ChildResult result = say(count);

    EXPECT_EQ(result.end, ChildEnd::kFinished);
    EXPECT_EQ(result.answer, Answer{"said"});
    EXPECT_EQ(result.output.size(), std::min(count, kLongestOutput));
  }
}

TEST(Child, ItsWordsAreKeptHoweverFewComeAtOnce) {
  const ChildResult result = RunInChild(
      [] {
        for (const char* letter : {"a", "b", "c"}) {
          Say(STDOUT_FILENO, letter);
          for (int unread = 1; unread > 0;) {
            std::this_thread::sleep_for(1ms);
            ::ioctl(STDOUT_FILENO, FIONREAD, &unread);
          }
        }
        return Answer{};
      },
      kLong);

  EXPECT_EQ(result.end, ChildEnd::kFinished);
  EXPECT_EQ(result.output, "abc");
}

TEST(Child, ItsLastWordsBeforeACrashAreKept) {
  const std::string words(60'000, 'x');
  const auto crash = [&] {
    Say(STDERR_FILENO, words);
    return DieOf(SIGKILL);
  };

  // As much as a pipe holds, and often: it is read while the child ends.
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(RunInChild(crash, kLong).output.size(), words.size());
  }
}

TEST(Child, ReadsNothingAndDumpsNoCore) {
  const auto look = [] {
    char byte = 0;
    rlimit core{};
    ::getrlimit(RLIMIT_CORE, &core);
    return Answer{std::to_string(::read(STDIN_FILENO, &byte, 1)), std::to_string(core.rlim_max)};
  };

  EXPECT_EQ(RunInChild(look, kLong).answer, (Answer{"0", "0"}));
}

TEST(Child, ReadsNothingOfWhatThisProcessWouldRead) {
  const tests::TempFolder folder;
  tests::WriteFile(folder.Path() / "input", "somebody's input");
  const int before = ::dup(STDIN_FILENO);
  const int input = ::open((folder.Path() / "input").c_str(), O_RDONLY);
  ::dup2(input, STDIN_FILENO);

  const ChildResult result = RunInChild(
      [] {
        char byte = 0;
        return Answer{std::to_string(::read(STDIN_FILENO, &byte, 1))};
      },
      kLong);

  ::dup2(before, STDIN_FILENO);
  ::close(input);
  ::close(before);
  EXPECT_EQ(result.answer, Answer{"0"});
}

// The open descriptors that a program keeps when it becomes another.
Answer KeptDescriptors() {
  Answer kept;
  for (int descriptor = STDERR_FILENO + 1; descriptor < 256; ++descriptor) {
    if (const int flags = ::fcntl(descriptor, F_GETFD); flags >= 0 && (flags & FD_CLOEXEC) == 0) {
      kept.push_back(std::to_string(descriptor));
    }
  }
  return kept;
}

TEST(Child, APipeIsNotPassedOnToWhatTheWorkStarts) {
  const Answer before = KeptDescriptors();

  EXPECT_EQ(RunInChild(KeptDescriptors, kLong).answer, before);
}

TEST(Child, WhatItStartedEndsWithIt) {
  const auto start = [] {
    const pid_t grandchild = ::fork();
    if (grandchild == 0) {
      Hang();
    }
    return Answer{std::to_string(grandchild)};
  };

  const ChildResult result = RunInChild(start, kLong);

  // Whoever waited until nobody holds the pipes any more would wait for the grandchild, and meet the limit.
  ASSERT_EQ(result.end, ChildEnd::kFinished);
  EXPECT_TRUE(Dies(std::stoi(result.answer.at(0))));
}

// Starts somebody who talks for ever in a group of its own, and waits until more has been said than is kept.
Answer StartTalker() {
  std::array<int, 2> said{};
  if (::pipe(said.data()) != 0) {
    return {};
  }
  const pid_t talker = ::fork();
  if (talker == 0) {
    ::setsid();
    for (std::size_t count = 0; count <= kLongestOutput; count += 6) {
      Say(STDOUT_FILENO, "words ");
    }
    Say(said[1], "!");
    Talk();
    ::_exit(0);
  }
  char mark = 0;
  return {std::to_string(::read(said[0], &mark, 1) == 1 ? talker : 0)};
}

TEST(Child, SomethingItStartedThatLeavesItsGroupAndTalksForEverHoldsNobodyUp) {
  const ChildResult result = RunInChild(StartTalker, kLong);

  ASSERT_EQ(result.end, ChildEnd::kFinished);
  EXPECT_EQ(result.output.size(), kLongestOutput);
  EXPECT_TRUE(IsTalk(result.output));
  const pid_t talker = std::stoi(result.answer.at(0));
  EXPECT_TRUE(Dies(talker)) << "nobody reads the pipe any more";
  ::kill(talker, SIGKILL);
}

TEST(Child, LeavesNothingBehind) {
  const std::size_t files = tests::OpenFiles();

  static_cast<void>(RunInChild([] { return Answer{}; }, kLong));
  static_cast<void>(RunInChild([]() -> Answer { throw 42; }, kLong));
  static_cast<void>(RunInChild([] { return DieOf(SIGBUS); }, kLong));
  static_cast<void>(RunInChild(Hang, 10ms));

  EXPECT_EQ(tests::OpenFiles(), files);
  EXPECT_FALSE(HasChildren());
}

TEST(Child, DoesNotOutliveTheProcessThatStartedIt) {
  const tests::TempFolder folder;
  const auto note = folder / "process";
  // The process in between is killed while its own child hangs.
  const pid_t between = ::fork();
  if (between == 0) {
    static_cast<void>(RunInChild(
        [&] {
          std::ofstream(note) << ::getpid() << std::flush;
          return Hang();
        },
        kLong));
    ::_exit(0);
  }
  pid_t process = 0;
  for (const auto deadline = Clock::now() + kLong; process == 0 && Clock::now() < deadline;) {
    std::this_thread::sleep_for(1ms);
    std::ifstream(note) >> process;
  }
  ASSERT_NE(process, 0);
  ASSERT_TRUE(IsAlive(process));

  ::kill(between, SIGKILL);
  ::waitpid(between, nullptr, 0);

  EXPECT_TRUE(Dies(process));
}

TEST(Child, WorksWhereTheKernelCannotWatchAProcess) {
  refuses_pidfd = true;

  const ChildResult finished = RunInChild([] { return Answer{"done"}; }, kLong);
  const ChildResult crashed = RunInChild([] { return DieOf(SIGBUS); }, kLong);
  const ChildResult hung = RunInChild(Hang, kShort);
  const auto closing = [] {
    ::close(STDOUT_FILENO);
    ::close(STDERR_FILENO);
    std::this_thread::sleep_for(50ms);
    return Answer{"late"};
  };
  const ChildResult late = RunInChild(closing, kLong);

  refuses_pidfd = false;
  EXPECT_EQ(finished.answer, Answer{"done"});
  EXPECT_EQ(crashed.code, SIGBUS);
  EXPECT_EQ(hung.end, ChildEnd::kTimedOut);
  EXPECT_EQ(late.answer, Answer{"late"});
}

TEST(Child, WorksWhereStandardStreamsAreClosed) {
  for (const auto& closed : {std::vector{0}, std::vector{0, 1}, std::vector{0, 2}, std::vector{0, 1, 2}}) {
    const ChildResult outer = RunInChild(
        [&] {
          for (const int descriptor : closed) {
            ::close(descriptor);
          }
          return RunInChild([] { return Answer{"inner"}; }, kLong).answer;
        },
        kLong);

    EXPECT_EQ(outer.answer, Answer{"inner"}) << closed.size() << " closed";
  }
}

TEST(Child, WhatItsWorkBecomesIsHeardWhereStandardStreamsAreClosed) {
  for (const auto& closed : {std::vector{2}, std::vector{0, 2}, std::vector{0, 1, 2}}) {
    const ChildResult outer = RunInChild(
        [&] {
          for (const int descriptor : closed) {
            ::close(descriptor);
          }
          const auto work = []() -> Answer {
            ::execl("/bin/sh", "sh", "-c", "echo words; echo errors >&2", nullptr);
            return {};
          };
          return Answer{RunInChild(work, kLong).output};
        },
        kLong);

    EXPECT_EQ(outer.answer, Answer{"words\nerrors\n"}) << closed.size() << " closed";
  }
}

TEST(Child, IsNotStartedWhereNoProcessIsLeft) {
  refuses_fork = true;
  const ChildResult result = RunInChild([] { return Answer{}; }, kLong);
  refuses_fork = false;

  EXPECT_EQ(result.end, ChildEnd::kNotStarted);
  EXPECT_EQ(result.code, EAGAIN);
}

TEST(Child, IsNotStartedWithoutDescriptorsToHearIt) {
  const ChildResult outer = RunInChild(
      [] {
        const rlimit none{0, 0};
        ::setrlimit(RLIMIT_NOFILE, &none);
        const ChildResult inner = RunInChild([] { return Answer{}; }, kLong);
        return Answer{inner.end == ChildEnd::kNotStarted ? "not started" : "started", std::to_string(inner.code)};
      },
      kLong);

  EXPECT_EQ(outer.answer, (Answer{"not started", std::to_string(EMFILE)}));
}

}  // namespace
}  // namespace doctor
