// Folders that change while a launch walks them: before each call that is about one of them, in turn.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>
#include <string>

#include "tests/faults/launch_world.h"
#include "tests/support/watched_calls.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kAdded = "6.0.3";

struct Change {
  const char* name;
  bool leaves_a_version;
  // Is given the folder that is walked, one beside it for what goes away, and the name of the newest version.
  std::function<void(const fs::path& fxr, const fs::path& aside, const fs::path& newest)> make;
};

const Change kChanges[] = {
    {"a version vanishes", true, [](const auto&, const auto& aside, const auto& newest) { fs::rename(newest, aside); }},
    {"a version becomes a file", true,
     [](const auto&, const auto& aside, const auto& newest) {
       fs::rename(newest, aside);
       WriteFile(newest, "file");
     }},
    {"a version becomes a fifo", true,
     [](const auto&, const auto& aside, const auto& newest) {
       fs::rename(newest, aside);
       ::mkfifo(newest.c_str(), 0600);
     }},
    {"a version becomes a link to itself", true,
     [](const auto&, const auto& aside, const auto& newest) {
       fs::rename(newest, aside);
       fs::create_directory_symlink(newest, newest);
     }},
    {"a version becomes a link to what it was", true,
     [](const auto&, const auto& aside, const auto& newest) {
       fs::rename(newest, aside);
       fs::create_directory_symlink(aside, newest);
     }},
    {"a version becomes empty", true,
     [](const auto&, const auto& aside, const auto& newest) {
       fs::rename(newest, aside);
       fs::create_directory(newest);
     }},
    {"a version is closed", true,
     [](const auto&, const auto&, const auto& newest) { fs::permissions(newest, fs::perms::none); }},
    {"a version gets a newer name", true,
     [](const auto& fxr, const auto&, const auto& newest) { fs::rename(newest, fxr / kAdded); }},
    {"a version appears", true,
     [](const auto& fxr, const auto&, const auto& newest) {
       fs::copy(newest, fxr / kAdded, fs::copy_options::recursive);
     }},
    {"a library vanishes", true,
     [](const auto&, const auto& aside, const auto& newest) { fs::rename(newest / "libhostfxr.so", aside); }},
    {"a library becomes a folder", true,
     [](const auto&, const auto& aside, const auto& newest) {
       fs::rename(newest / "libhostfxr.so", aside);
       fs::create_directory(newest / "libhostfxr.so");
     }},
    {"a library becomes a link to what it was", true,
     [](const auto&, const auto& aside, const auto& newest) {
       fs::rename(newest / "libhostfxr.so", aside);
       fs::create_symlink(aside, newest / "libhostfxr.so");
     }},
    {"a library is replaced by a new one", true,
     [](const auto&, const auto& aside, const auto& newest) {
       fs::copy(newest / "libhostfxr.so", aside);
       fs::rename(aside, newest / "libhostfxr.so");
     }},
    {"all versions vanish", false, [](const auto& fxr, const auto& aside, const auto&) { fs::rename(fxr, aside); }},
    {"all versions become a file", false,
     [](const auto& fxr, const auto& aside, const auto&) {
       fs::rename(fxr, aside);
       WriteFile(fxr, "file");
     }},
};

// A launch before whose call of that number, of those about the folders, something changed.
struct ChangedLaunch {
  Outcome outcome;
  int calls = 0;
};

ChangedLaunch LaunchWithChange(LaunchWorld& world, const Change& change, int number) {
  ChangedLaunch result;
  const fs::path fxr = world.Runtime().FxrFolder();
  result.outcome = world.Launch()
                       .WithoutReadingEverything()
                       .Watched([&](const WatchedCall& call) {
                         if (call.Path().starts_with(fxr.string()) && ++result.calls == number) {
                           change.make(fxr, world.Runtime().Root() / "aside", fxr / kNewest);
                         }
                         return Decision::Make();
                       })
                       .Run();
  fs::permissions(world.Runtime().Root(), fs::perms::owner_all);
  return result;
}

// Gives how many calls were about the folders.
int ExpectAVersionRuns(const Change& change, int number) {
  LaunchWorld world;
  const ChangedLaunch launch = LaunchWithChange(world, change, number);
  SCOPED_TRACE(std::string(change.name) + " before call " + std::to_string(number));
  EXPECT_TRUE(world.Ran(launch.outcome) || world.Ran(launch.outcome, kAdded) ||
              (!change.leaves_a_version && EndedWith255(launch.outcome)))
      << launch.outcome;
  return launch.calls;
}

TEST(ChangingFolders, ALaunchRunsAVersionThatIsThereOrWasAndNeverHangs) {
  if (const std::string why = WhyCallsCannotBeWatched(); !why.empty()) {
    GTEST_SKIP() << why;
  }
  for (const Change& change : kChanges) {
    int number = 1;
    while (number <= ExpectAVersionRuns(change, number)) {
      ++number;
    }
    EXPECT_GT(number, 20) << "hardly any call was seen";
  }
}

}  // namespace
}  // namespace tests
