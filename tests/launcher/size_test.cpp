// Inputs of unusual size: they work, in time that grows in proportion.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <vector>

#include "tests/support/launcher.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/settings_file.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

// In memory, where ten thousand folders are made in no time.
constexpr const char* kInMemory = "/var/opt/morvath";

// What ten times as much may cost: well below a hundred times, which is what a quadratic step would take.
constexpr int kMuchMoreThanTenTimes = 40;

// A launch too short to be measured counts as this long.
constexpr std::chrono::milliseconds kMeasurable{5};

void ExpectInProportion(const Outcome& small, const Outcome& tenTimes) {
  const auto base = std::max<std::chrono::microseconds>(small.processor_time, kMeasurable);
  EXPECT_LT(tenTimes.processor_time.count(), base.count() * kMuchMoreThanTenTimes);
}

constexpr std::size_t k64Mebibytes = 67'108'864;

std::string Values(std::size_t size) {
  return std::string(size, 'v');
}

std::string Lines(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) {
    text += "key" + std::to_string(i) + "=value\n";
  }
  return text;
}

TEST(Size, AMillionSettingsLinesWork) {
  RuntimeTree runtime(kInMemory);
  runtime.AddHost("6.0.36");
  const std::string root = "DotnetRootFolder=" + runtime.Root().string();
  SettingsFile settings(Lines(100'000) + root);

  const StandInHost host;
  const auto small = Launcher(host).Run();
  settings.Write(Lines(1'000'000) + root);
  const auto large = Launcher(host).Run();

  EXPECT_TRUE(EndedSilently(small, 0));
  EXPECT_TRUE(EndedSilently(large, 0));
  EXPECT_EQ(host.VersionThatRan(), "6.0.36, 6.0.36");
  ExpectInProportion(small, large);
}

TEST(Size, OneSettingsLineOf64MebibytesWorks) {
  RuntimeTree runtime(kInMemory);
  runtime.AddHost("6.0.36");
  const std::string root = "\nDotnetRootFolder=" + runtime.Root().string();
  const StandInHost host;
  SettingsFile settings("k=" + Values(k64Mebibytes / 10) + root);

  const auto small = Launcher(host).Run();
  settings.Write("k=" + Values(k64Mebibytes) + root);
  const auto large = Launcher(host).Run();

  EXPECT_TRUE(EndedSilently(small, 0));
  EXPECT_TRUE(EndedSilently(large, 0));
  EXPECT_EQ(host.VersionThatRan(), "6.0.36, 6.0.36");
  ExpectInProportion(small, large);
}

// Enough that a quadratic step would take hours. The path is copied and converted several times: of one with 64 MiB the
// system would have to supply more than a gigabyte of memory, which may take longer than everything else.
TEST(Size, ARootOf8MebibytesEndsWith255) {
  const SettingsFile settings("DotnetRootFolder=/" + Values(8'388'608));

  EXPECT_TRUE(EndedSilently(Launcher().Run(), 255));
}

TEST(Size, TenThousandVersionFoldersWork) {
  struct Row {
    const char* name;
    const char* file;
  };
  for (const Row& row : {Row{"broken libraries", "/libhostfxr.so"}, Row{"no libraries", "/other"}}) {
    SCOPED_TRACE(row.name);
    RuntimeTree runtime(kInMemory);
    runtime.AddHost("6.0.0");
    const auto settings = SettingsFile::ForRoot(runtime.Root());
    const StandInHost host;
    const auto add = [&](int from, int to) {
      for (int i = from; i <= to; ++i) {
        runtime.AddFile("6.0." + std::to_string(i) + row.file, "broken");
      }
    };

    add(1, 1'000);
    const auto small = Launcher(host).Run();
    add(1'001, 10'000);
    const auto large = Launcher(host).Run();

    EXPECT_TRUE(EndedSilently(small, 0));
    EXPECT_TRUE(EndedSilently(large, 0));
    EXPECT_EQ(host.VersionThatRan(), "6.0.0, 6.0.0");
    ExpectInProportion(small, large);
  }
}

TEST(Size, AHundredThousandArgumentsArrive) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.36");
  const auto settings = SettingsFile::ForRoot(runtime.Root());
  const StandInHost host;
  std::vector<std::string> arguments;  // Short ones: the system takes two megabytes of them as a rule.
  arguments.reserve(100'000);
  for (int i = 0; i < 100'000; ++i) {
    arguments.push_back("a" + std::to_string(i));
  }

  EXPECT_TRUE(EndedSilently(Launcher(host).Arguments(arguments).Run(), 0));
  const auto received = host.Call("initialize").arguments;
  ASSERT_EQ(received.size(), 100'001U);
  EXPECT_EQ(std::vector<std::string>(received.begin() + 1, received.end()), arguments);
}

// Moves a runtime below so many long folders that no system call takes its path; makes the path that does name it.
std::string BuryDeep(const RuntimeTree& runtime) {
  const std::string name(200, 'd');
  std::string root = runtime.Root();
  fs::create_directory(runtime.Root() / "leaf");
  fs::rename(runtime.Root() / "host", runtime.Root() / "leaf/host");
  root += "/leaf";
  for (int i = 0; i < 25; ++i) {
    fs::create_directory(runtime.Root() / "wrap");
    fs::rename(runtime.Root() / "leaf", runtime.Root() / "wrap" / name);
    fs::rename(runtime.Root() / "wrap", runtime.Root() / "leaf");
    root += "/" + name;
  }
  return root;
}

TEST(Size, ARootAbove4095BytesIsNothingToLoadFromAndNoCrash) {
  RuntimeTree runtime(kInMemory);
  runtime.AddHost("6.0.36");
  const std::string root = BuryDeep(runtime);
  const StandInHost host;

  for (const std::string& path : {root, root + "/not/there", "/" + std::string(5'000, 'x')}) {
    SCOPED_TRACE(path.size());
    ASSERT_GT(path.size(), 4'095U);
    const SettingsFile settings("DotnetRootFolder=" + path);
    EXPECT_TRUE(EndedSilently(Launcher(host).Run(), 255));
    EXPECT_TRUE(host.Calls().empty());
  }
}

TEST(Size, VersionFoldersNestedToAnyDepthAreNoCrash) {
  RuntimeTree runtime(kInMemory);
  runtime.AddHost("6.0.36");
  fs::create_directory(runtime.FxrFolder() / "leaf");
  for (int i = 0; i < 60; ++i) {
    fs::create_directory(runtime.FxrFolder() / "wrap");
    fs::rename(runtime.FxrFolder() / "leaf", runtime.FxrFolder() / "wrap" / ("6.0." + std::string(200, '9')));
    fs::rename(runtime.FxrFolder() / "wrap", runtime.FxrFolder() / "leaf");
  }
  const auto settings = SettingsFile::ForRoot(runtime.Root());
  const StandInHost host;

  EXPECT_TRUE(EndedSilently(Launcher(host).Run(), 0));
  EXPECT_EQ(host.VersionThatRan(), "6.0.36");
}

}  // namespace
}  // namespace tests
