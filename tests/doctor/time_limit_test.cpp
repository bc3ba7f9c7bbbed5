#include <gtest/gtest.h>

#include <chrono>

#include "tests/doctor/installation.h"
#include "tests/support/doctor.h"

namespace tests {
namespace {

using namespace std::chrono_literals;

TEST(DoctorTimeLimit, ALibraryThatHangsWhileItIsLoadedIsGivenUpAfterTenSeconds) {
  Installation installation;
  installation.Healthy().OddHost("6.0.40", "comes_Hang");
  const auto start = std::chrono::steady_clock::now();

  const Outcome outcome = Doctor().Run();

  EXPECT_GE(std::chrono::steady_clock::now() - start, 10s);
  EXPECT_EQ(outcome.status, 3);
  EXPECT_TRUE(outcome.out.starts_with("Not known: loading ")) << outcome;
}

}  // namespace
}  // namespace tests
