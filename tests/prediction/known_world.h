// The worlds that the launcher's own tests know, laid out for a comparison.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "tests/prediction/prediction.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/settings_file.h"

namespace tests {

/// A product with an empty runtime tree whose settings name it.
struct KnownWorld {
  RuntimeTree runtime{"/var/opt/morvath"};
  StandInHost host;
  SettingsFile settings = SettingsFile::ForRoot(runtime.Root());
  Start start = {};

  /// Puts a host that misbehaves into the version's folder; `variant` names it as the build does.
  KnownWorld& AddOddHost(std::string_view version, std::string_view variant);
};

/// A row: a world, and how a launch in it is known to end.
struct KnownCase {
  const char* name;
  void (*lay_out)(KnownWorld& world);
  const char* outcome;
  const char* decisive = "";  ///< The version that decides.
};

/// Checks that doctor and launcher agree, and that both are right.
void Check(const KnownCase& known);

}  // namespace tests
