#include "doctor/report/waiting_line.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

namespace doctor {
namespace {

using namespace std::chrono_literals;

// A terminal that nobody watches until the end.
class Pty {
 public:
  Pty() {
    EXPECT_EQ(::openpty(&watched_, &written_, nullptr, nullptr, nullptr), 0);
    ::fcntl(watched_, F_SETFL, O_NONBLOCK);
  }
  ~Pty() {
    ::close(watched_);
    ::close(written_);
  }
  Pty(const Pty&) = delete;
  Pty& operator=(const Pty&) = delete;

  int Written() const { return written_; }

  std::string Text() const {
    char buffer[4096];
    const ssize_t count = ::read(watched_, buffer, sizeof buffer);
    return {buffer, count > 0 ? static_cast<std::size_t>(count) : 0};
  }

 private:
  int watched_ = -1;
  int written_ = -1;
};

TEST(WaitingLine, SaysWhatIsWaitedForAndIsErased) {
  const Pty terminal;
  WaitingLine line(terminal.Written(), {.columns = 100}, 10s);

  line.Show("the runtime to start");
  EXPECT_EQ(terminal.Text(), "\r\rWaiting for the runtime to start, 10 s at most");
  line.Show("");
  EXPECT_EQ(terminal.Text(), "\r" + std::string(46, ' ') + "\r");
}

TEST(WaitingLine, StaysWithinItsLine) {
  const Pty narrow;
  WaitingLine line(narrow.Written(), {.columns = 20}, 10s);
  line.Show("/кор/ень to load");
  EXPECT_EQ(narrow.Text(), "\r\rWaiting for /кор/ен");

  const Pty unknown;
  WaitingLine usual(unknown.Written(), {}, 10s);
  usual.Show(std::string(200, 'x'));
  EXPECT_EQ(unknown.Text(), "\r\rWaiting for " + std::string(67, 'x'));
}

TEST(WaitingLine, IsALineLikeOthersWhereNothingCanBeTakenBack) {
  const Pty terminal;
  WaitingLine line(terminal.Written(), {.columns = 20, .can_erase = false}, 250ms);

  line.Show("a\x1b[2J name");
  line.Show("");

  EXPECT_EQ(terminal.Text(), "Waiting for a\\x1b[2J name, 0.25 s at most\r\n");
}

TEST(WaitingLine, IsLeftOutWhereItCannotBeWritten) {
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_NONBLOCK), 0);
  std::string full(1 << 20, 'x');
  full.resize(static_cast<std::size_t>(::write(ends[1], full.data(), full.size())));
  WaitingLine line(ends[1], {.can_erase = false}, 10s);

  line.Show("the first");
  EXPECT_EQ(::read(ends[0], full.data(), full.size()), static_cast<ssize_t>(full.size()));
  line.Show("the second");

  const ssize_t count = ::read(ends[0], full.data(), full.size());
  EXPECT_EQ(full.substr(0, static_cast<std::size_t>(count)), "Waiting for the second, 10 s at most\n");
  ::close(ends[0]);
  ::close(ends[1]);
}

}  // namespace
}  // namespace doctor
