#include "doctor/child/signal_name.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstring>

namespace doctor {
namespace {

TEST(SignalName, IsWhatShellsAndManualsCallIt) {
  EXPECT_EQ(SignalName(SIGBUS), "SIGBUS");
  EXPECT_EQ(SignalName(SIGSEGV), "SIGSEGV");
}

TEST(SignalName, IsTheCLibrarysNameOfEverySignalThatHasOne) {
  for (int signal = 1; signal <= SIGRTMAX; ++signal) {
    if (const char* name = ::sigabbrev_np(signal)) {
      EXPECT_EQ(SignalName(signal), std::string("SIG") + name);
    } else {
      EXPECT_EQ(SignalName(signal), "signal " + std::to_string(signal));
    }
  }
}

TEST(SignalName, IsTheNumberOfASignalWithoutName) {
  EXPECT_EQ(SignalName(SIGRTMIN), "signal " + std::to_string(SIGRTMIN));
  EXPECT_EQ(SignalName(0), "signal 0");
  EXPECT_EQ(SignalName(999), "signal 999");
}

}  // namespace
}  // namespace doctor
