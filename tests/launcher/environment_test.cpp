// The environment that the runtime finds.
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "tests/support/launcher.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/settings_file.h"

namespace tests {
namespace {

using Variables = std::map<std::string, std::string>;

HostCall LoadedWith(const Variables& variables) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.36");
  const auto settings = SettingsFile::ForRoot(runtime.Root());
  const StandInHost host;
  EXPECT_TRUE(EndedSilently(Launcher(host).Variables(variables).Run(), 0));
  EXPECT_EQ(host.Call("loaded").environment, host.Call("initialize").environment);
  return host.Call("loaded");
}

TEST(Environment, IsFixedBeforeTheHostIsLoaded) {
  const auto call = LoadedWith({});

  EXPECT_EQ(call.Variable("DOTNET_MULTILEVEL_LOOKUP"), "0");
  EXPECT_EQ(call.Variable("DOTNET_EnableDiagnostics"), "0");
  EXPECT_EQ(call.Variable("COMPlus_GCName"), "(not set)");
  EXPECT_EQ(call.Variable("DOTNET_GCName"), "(not set)");
  EXPECT_EQ(call.Variable("DOTNET_STARTUP_HOOKS"), "(not set)");
}

TEST(Environment, HostileVariablesAreReplacedOrGone) {
  const auto call = LoadedWith({{"DOTNET_MULTILEVEL_LOOKUP", "1"},
                                {"DOTNET_EnableDiagnostics", "1"},
                                {"COMPlus_GCName", "libevil.so"},
                                {"DOTNET_GCName", "libevil.so"},
                                {"DOTNET_STARTUP_HOOKS", "/tmp/evil.dll"}});

  EXPECT_EQ(call.Variable("DOTNET_MULTILEVEL_LOOKUP"), "0");
  EXPECT_EQ(call.Variable("DOTNET_EnableDiagnostics"), "0");
  EXPECT_EQ(call.Variable("COMPlus_GCName"), "(not set)");
  EXPECT_EQ(call.Variable("DOTNET_GCName"), "(not set)");
  EXPECT_EQ(call.Variable("DOTNET_STARTUP_HOOKS"), "(not set)");
}

TEST(Environment, EmptyValuesCountAsSet) {
  const auto call = LoadedWith({{"DOTNET_MULTILEVEL_LOOKUP", ""}, {"DOTNET_STARTUP_HOOKS", ""}});

  EXPECT_EQ(call.Variable("DOTNET_MULTILEVEL_LOOKUP"), "0");
  EXPECT_EQ(call.Variable("DOTNET_STARTUP_HOOKS"), "(not set)");
}

TEST(Environment, EverythingElseStaysAsItIs) {
  const Variables others{{"DOTNET_ROOT", "/elsewhere"},
                         {"DOTNET_gcServer", "1"},
                         {"COMPlus_EnableDiagnostics", "1"},
                         {"dotnet_startup_hooks", "lower"},
                         {"DOTNET_GCName2", "near"},
                         {"EMPTY", ""},
                         {"BYTES", "\xff\xfe"}};

  const auto call = LoadedWith(others);

  for (const auto& [name, value] : others) {
    EXPECT_EQ(call.Variable(name), value) << name;
  }
}

TEST(Environment, IsFixedAlthoughNoRuntimeLoads) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.1", HostVariant::kLacksClose);
  const auto settings = SettingsFile::ForRoot(runtime.Root());
  const StandInHost host;

  EXPECT_TRUE(EndedSilently(Launcher(host).Variable("DOTNET_GCName", "libevil.so").Run(), 255));
  EXPECT_EQ(host.Call("loaded").Variable("DOTNET_GCName"), "(not set)");
  EXPECT_EQ(host.Call("loaded").Variable("DOTNET_EnableDiagnostics"), "0");
}

}  // namespace
}  // namespace tests
