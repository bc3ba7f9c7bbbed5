// Hosts that never come back. The doctor waits for its time limit each time.
#include <gtest/gtest.h>

#include "tests/prediction/known_world.h"

namespace tests {
namespace {

TEST(PredictedHangingHosts, AreNotKnownToRun) {
  for (const char* variant : {"comes_Hang", "prepares_Hang"}) {
    SCOPED_TRACE(variant);
    KnownWorld world;
    world.AddOddHost("6.0.36", variant);
    world.start.patience = std::chrono::seconds(2);

    const Comparison comparison = Compare(world.host, world.start);

    EXPECT_EQ(comparison.difference, "");
    EXPECT_EQ(comparison.outcome, "not-known");
  }
}

}  // namespace
}  // namespace tests
