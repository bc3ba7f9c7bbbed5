// The product installed on a machine with a real .NET.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/process.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/settings_file.h"

namespace tests {

/// Where the product's files belong.
inline constexpr std::string_view kProductFolder = "/opt/morvath/quor/lib64";

/// What scripts/prepare-sample found and made.
struct Prepared {
  std::filesystem::path dotnet;  ///< The .NET of this machine.
  std::filesystem::path root;    ///< A runtime root whose 6.0 host runs programs on that .NET's frameworks.
  std::string host;              ///< The version of that host.
  std::filesystem::path sample;  ///< The folder of the built sample.
  std::string missing;           ///< Why there is nothing of all this; empty when there is.

  /// Reads what was left for the tests.
  static Prepared Read();
  /// The 6.0 host's library.
  [[nodiscard]] std::filesystem::path HostFile() const;
};

/// Skips its tests where there is no .NET.
class RealDotnet : public ::testing::Test {
 protected:
  void SetUp() override;
  const Prepared prepared_ = Prepared::Read();
};

/// The sample in the product's folder, and settings that name a runtime root. Everything is removed when destroyed;
/// refuses to be made where a product is installed already.
class InstalledProduct {
 public:
  /// The settings name the root that was prepared.
  explicit InstalledProduct(const Prepared& prepared) : InstalledProduct(prepared, prepared.root) {}
  InstalledProduct(const Prepared& prepared, const std::filesystem::path& root);
  ~InstalledProduct();
  InstalledProduct(const InstalledProduct&) = delete;
  InstalledProduct& operator=(const InstalledProduct&) = delete;

  /// The path of the assembly that the launcher runs.
  [[nodiscard]] static std::filesystem::path Assembly();
  /// The launcher, with arguments for the sample.
  [[nodiscard]] static Command Start(std::vector<std::string> arguments);
  /// The machine's own `dotnet` command, which runs the same assembly without the launcher.
  [[nodiscard]] Command StartWithoutLauncher(std::vector<std::string> arguments) const;

 private:
  std::filesystem::path dotnet_;
  SettingsFile settings_;
};

/// A runtime root to break hosts in: it has no host yet, and the frameworks of the prepared one.
class RealRuntimeTree : public RuntimeTree {
 public:
  explicit RealRuntimeTree(const Prepared& prepared);
  /// Puts the real host there.
  RealRuntimeTree& AddRealHost(std::string_view version);

 private:
  std::filesystem::path host_file_;
};

/// Whether the sample ran and was started by that library.
::testing::AssertionResult RanOn(const std::filesystem::path& host_file, const Outcome& outcome);

}  // namespace tests
