// The logger slot has states that a process cannot leave again.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>

namespace tests {

/// Runs `body` in a process of its own, which ends with it. Fails when anything in it fails.
template <typename Body>
void InOwnProcess(const Body& body) {
  const auto run = [&] {
    body();
    std::exit(testing::Test::HasFailure() ? 1 : 0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

}  // namespace tests
