#include "tests/prediction/known_world.h"

#include "tests/support/odd_host.h"

namespace tests {

KnownWorld& KnownWorld::AddOddHost(std::string_view version, std::string_view variant) {
  runtime.AddHostOfBytes(version, ReadFile(OddHost(variant)));
  return *this;
}

void Check(const KnownCase& known) {
  SCOPED_TRACE(known.name);
  KnownWorld world;
  known.lay_out(world);

  const Comparison comparison = Compare(world.host, world.start);

  EXPECT_EQ(comparison.difference, "");
  EXPECT_EQ(comparison.outcome, known.outcome);
  EXPECT_EQ(comparison.decisive, known.decisive);
}

}  // namespace tests
