// A product laid out at random: settings, runtime and host.
#pragma once

#include <cstdint>
#include <random>
#include <string_view>

#include "tests/prediction/ground.h"
#include "tests/prediction/prediction.h"

namespace tests {

/// Chooses. The same numbers on every machine.
class Choice {
 public:
  Choice(std::uint64_t seed, std::uint64_t number);

  /// 0 to `count` - 1.
  [[nodiscard]] std::size_t Below(std::size_t count) { return static_cast<std::size_t>(engine_() % count); }
  [[nodiscard]] bool OneIn(std::size_t count) { return Below(count) == 0; }
  template <typename Range>
  [[nodiscard]] const auto& Of(const Range& range) {
    return range[Below(std::size(range))];
  }

 private:
  std::mt19937_64 engine_;
};

/// Lays a product out on the ground: the same for the same choices. What the host is set to do is noted there, too.
void LayOut(Choice& choice, Ground& ground, StandInHost& host, Start& start);

}  // namespace tests
