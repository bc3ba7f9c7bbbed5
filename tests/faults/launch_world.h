// A launch that would succeed, and the ways in which one may end to which something happens.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

#include "tests/support/launcher.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/settings_file.h"

namespace tests {

/// The version that a launch takes, and the one that it falls back to.
inline constexpr std::string_view kNewest = "6.0.2";
inline constexpr std::string_view kOlder = "6.0.1";

/// Settings and a runtime with two versions, whose hosts take no memory and say what happens to them. A runtime that
/// the settings name in a line before the last one is there too: half of the settings would lead to it.
class LaunchWorld {
 public:
  /// The runtime is laid out inside `parent`.
  explicit LaunchWorld(const std::filesystem::path& parent = std::filesystem::temp_directory_path());

  /// A launch with two arguments.
  [[nodiscard]] Command Launch() const;

  [[nodiscard]] RuntimeTree& Runtime() { return runtime_; }
  [[nodiscard]] SettingsFile& Settings() { return settings_; }

  /// What a host of that version says of a launch from its loading to its unloading.
  [[nodiscard]] std::string Story(std::string_view version) const;

  /// Whether the launch ended as though nothing had happened, or with the older version instead; in both cases with
  /// nothing open but the standard streams.
  [[nodiscard]] testing::AssertionResult Ran(const Outcome& outcome) const;
  /// The same for one version.
  [[nodiscard]] testing::AssertionResult Ran(const Outcome& outcome, std::string_view version) const;

 private:
  RuntimeTree decoy_;
  RuntimeTree runtime_;
  SettingsFile settings_;
};

/// Whether the launch ended with 255 in silence, and no host was asked to do anything.
[[nodiscard]] testing::AssertionResult EndedWith255(const Outcome& outcome);

/// Whether it ended by abort, its first words "Error occurred: " and these, and no application ran before.
[[nodiscard]] testing::AssertionResult Aborted(const Outcome& outcome, std::string_view words);

}  // namespace tests
