// Many launches at once.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/faults/launch_world.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

constexpr int kWaves = 20;
constexpr int kLaunchesOfAWave = 50;

// What each launch of a wave ended with. All of a wave are under way at once.
std::vector<Outcome> Wave(const Command& launch) {
  std::vector<Outcome> outcomes(kLaunchesOfAWave);
  std::vector<std::thread> threads;
  threads.reserve(outcomes.size());
  for (Outcome& outcome : outcomes) {
    threads.emplace_back([&launch, &outcome] { outcome = launch.Run(); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  return outcomes;
}

// Does something again and again until it is destroyed, at least once.
class Meanwhile {
 public:
  explicit Meanwhile(std::function<void()> step)
      : thread_([this, step = std::move(step)] {
          do {
            step();
          } while (!is_over_);
        }) {}
  ~Meanwhile() {
    is_over_ = true;
    thread_.join();
  }
  Meanwhile(const Meanwhile&) = delete;
  Meanwhile& operator=(const Meanwhile&) = delete;

 private:
  std::atomic<bool> is_over_ = false;
  std::thread thread_;
};

// As package managers do it: the whole new file under another name, then renamed over the old one.
void Replace(const fs::path& file, const std::string& bytes) {
  const fs::path fresh = file.string() + ".dpkg-new";
  WriteFile(fresh, bytes);
  fs::rename(fresh, file);
}

TEST(Crowd, AThousandLaunchesRun) {
  const LaunchWorld world;
  for (int wave = 0; wave < kWaves; ++wave) {
    for (const Outcome& outcome : Wave(world.Launch())) {
      EXPECT_TRUE(world.Ran(outcome, kNewest));
    }
  }
}

TEST(Crowd, AThousandLaunchesRunWhileTheRuntimeAndTheSettingsAreReplaced) {
  LaunchWorld world;
  const std::string host = ReadFile(PLAIN_HOST);
  const std::string settings = ReadFile(kSettingsPath);
  const Meanwhile replaced([&] {
    Replace(world.Runtime().HostFile(kNewest), host);
    Replace(kSettingsPath, settings);
  });
  for (int wave = 0; wave < kWaves; ++wave) {
    for (const Outcome& outcome : Wave(world.Launch())) {
      EXPECT_TRUE(world.Ran(outcome, kNewest));
    }
  }
}

// A version comes before the one that it follows goes; an old one always stays.
TEST(Crowd, AThousandLaunchesRunWhileTheRuntimeIsUpgraded) {
  LaunchWorld world;
  const std::string host = ReadFile(PLAIN_HOST);
  constexpr std::array<std::string_view, 2> kVersions{kNewest, "6.0.3"};
  std::size_t turn = 0;
  const Meanwhile upgraded([&] {
    Replace(world.Runtime().HostFile(kVersions[(turn + 1) % 2]), host);
    fs::remove_all(world.Runtime().FxrFolder() / kVersions[turn % 2]);
    ++turn;
  });
  for (int wave = 0; wave < kWaves; ++wave) {
    for (const Outcome& outcome : Wave(world.Launch())) {
      EXPECT_TRUE(world.Ran(outcome) || world.Ran(outcome, kVersions[1]));
    }
  }
}

}  // namespace
}  // namespace tests
