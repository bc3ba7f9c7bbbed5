#include "doctor/report/terminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include "foundation/file_descriptor.h"
#include "tests/support/scoped_environment.h"

namespace doctor {
namespace {

using tov::posix::FileDescriptor;

// A terminal of 80 columns.
struct Pty {
  FileDescriptor master;
  FileDescriptor slave;

  Pty() {
    int ends[2] = {-1, -1};
    const winsize size{24, 80, 0, 0};
    EXPECT_EQ(::openpty(&ends[0], &ends[1], nullptr, nullptr, &size), 0);
    master = FileDescriptor(ends[0]);
    slave = FileDescriptor(ends[1]);
  }
};

TEST(Terminal, IsAsWideAsItIsUnlessColumnsSaysOtherwise) {
  tests::ScopedEnvironment environment({{"COLUMNS", ""}, {"TERM", "xterm"}, {"NO_COLOR", ""}});
  const Pty pty;

  EXPECT_EQ(PageWidth(LookAtTerminal(pty.slave.Get())), 80U);
  environment.Set("COLUMNS", "72");
  EXPECT_EQ(PageWidth(LookAtTerminal(pty.slave.Get())), 72U);
  environment.Set("COLUMNS", "wide");
  EXPECT_EQ(PageWidth(LookAtTerminal(pty.slave.Get())), 80U);
}

TEST(Terminal, ThePageIsNeitherTooNarrowNorTooWide) {
  EXPECT_EQ(PageWidth({true, true, 1}), 60U);
  EXPECT_EQ(PageWidth({true, true, 500}), 160U);
  EXPECT_EQ(PageWidth({true, true, 0}), 100U);
}

TEST(Terminal, WhatIsNoneHasAPageOfOneHundredColumns) {
  tests::ScopedEnvironment environment;
  environment.Set("COLUMNS", "72");
  const FileDescriptor null = tov::posix::OpenForReading(AT_FDCWD, "/dev/null");

  const Terminal terminal = LookAtTerminal(null.Get());

  EXPECT_FALSE(terminal.is_there);
  EXPECT_EQ(PageWidth(terminal), 100U);
}

TEST(Terminal, TakesNoColoursWhereItIsDumbOrNoneAreWanted) {
  tests::ScopedEnvironment environment({{"NO_COLOR", ""}, {"TERM", "xterm"}});
  const Pty pty;

  EXPECT_TRUE(LookAtTerminal(pty.slave.Get()).takes_colors);
  environment.Set("TERM", "dumb");
  EXPECT_FALSE(LookAtTerminal(pty.slave.Get()).takes_colors);
  environment.Set("TERM", "xterm").Set("NO_COLOR", "1");
  EXPECT_FALSE(LookAtTerminal(pty.slave.Get()).takes_colors);
}

}  // namespace
}  // namespace doctor
