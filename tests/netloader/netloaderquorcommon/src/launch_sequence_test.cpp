#include "netloader/netloaderquorcommon/src/launch_sequence.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <system_error>
#include <typeinfo>
#include <vector>

#include "netloader/logger/global_logger.h"
#include "tests/netloader/netloaderquorcommon/src/interposed_readlink.h"
#include "tests/support/captured_log.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/settings_file.h"
#include "tests/support/stand_in_host.h"
#include "tests/support/temp_folder.h"

// Every test runs in a process of its own: the settings are read once, and the empty logger stays.
namespace netloader::quor {
namespace {

namespace fs = std::filesystem;
using tests::HostFunction;
using tests::Variable;
using tov::WideString;
using Environment = std::map<WideString, WideString>;
using Story = std::vector<std::string>;

// A runtime with one host, and the settings that name it.
class InstalledRuntime {
 public:
  explicit InstalledRuntime(const std::string& more = {})
      : settings_("DotnetRootFolder=" + Runtime().Root().string() + "\n" + more) {
    Apply();
  }

  tests::RuntimeTree& Runtime() { return runtime_; }

  void Apply() {
    for (const auto& [name, value] : host.Environment()) {
      environment_.Set(name, value);
    }
    environment_.Remove("DOTNET_MULTILEVEL_LOOKUP");
  }

  tests::StandInHost host;

 private:
  tests::RuntimeTree runtime_;
  tests::SettingsFile settings_;
  tests::ScopedEnvironment environment_;
};

std::shared_ptr<LibraryInterface> Launch(const Environment& environment = {}, std::vector<const char*> arguments = {}) {
  return InitAndLoadAssembly(u"grellin_loader", u"app.dll", static_cast<int>(arguments.size()),
                             arguments.empty() ? nullptr : arguments.data(), environment);
}

TEST(LaunchSequence, LoadsTheAssemblyAndDoesNotRunIt) {
  InstalledRuntime world;
  world.Runtime().AddHost("6.0.1");

  const auto application = Launch();

  EXPECT_NE(application, nullptr);
  EXPECT_EQ(world.host.Story(), (Story{"6.0.1 loaded", "6.0.1 initialize"}));
  EXPECT_EQ(world.host.Call("initialize").arguments, (Story{"/opt/morvath/quor/lib64/app.dll"}));
  EXPECT_EQ(world.host.Call("initialize").fields.at("dotnet_root"), world.Runtime().Root());
}

TEST(LaunchSequence, InstallsTheEmptyLoggerBeforeItsFirstLine) {
  InstalledRuntime world;
  world.Runtime().AddHost("6.0.1");
  const tests::CapturedLog log;
  // Abandoned by the launch, on purpose; kept here, so that it is no leak.
  [[maybe_unused]] static const logger::ILogger* const abandoned = logger::GetLogger();

  static_cast<void>(Launch());

  EXPECT_TRUE(logger::IsEmptyLoggerCurrent());
  ASSERT_FALSE(log.Lines().empty());
  EXPECT_EQ(log.Lines().back(), "TRACE\tInitNetloaderLoggingSettingsOrUseDefault: logging settings set");
}

TEST(LaunchSequence, PassesTheArgumentsOn) {
  InstalledRuntime world;
  world.Runtime().AddHost("6.0.1");

  const auto application = Launch({}, {"a", "b"});

  EXPECT_EQ(world.host.Call("initialize").fields.at("argc"), "3");
  EXPECT_EQ(world.host.Call("initialize").arguments, (Story{"/opt/morvath/quor/lib64/app.dll", "a", "b"}));
}

TEST(LaunchSequence, PassesAnArgumentCountWithoutAnArrayOnUnchanged) {
  InstalledRuntime world;
  world.Runtime().AddHost("6.0.1");
  try {
    InitAndLoadAssembly(u"grellin_loader", u"app.dll", 1, nullptr, {});
    FAIL() << "nothing was thrown";
  } catch (const std::invalid_argument* thrown) {
    const std::unique_ptr<const std::invalid_argument> failure(thrown);
    EXPECT_STREQ(failure->what(), "argv is null");
  }
}

TEST(LaunchSequence, TheApplicationKeepsTheHostLoadedAndItsRunIsTheHosts) {
  InstalledRuntime world;
  world.Runtime().AddHost("6.0.1");
  world.host.Returns(HostFunction::kRun, 3).Returns(HostFunction::kClose, 4);
  world.Apply();
  auto application = Launch();

  EXPECT_EQ(application->Run(), 4);
  application.reset();

  EXPECT_EQ(world.host.Story(),
            (Story{"6.0.1 loaded", "6.0.1 initialize", "6.0.1 run_app", "6.0.1 close", "6.0.1 unloaded"}));
}

// The variables that differ between two environments, with their new values.
std::map<std::string, std::string> Changes(const std::map<std::string, std::string>& before,
                                           const std::map<std::string, std::string>& after) {
  std::map<std::string, std::string> changes;
  for (const auto& [name, value] : after) {
    if (const auto found = before.find(name); found == before.end() || found->second != value) {
      changes[name] = value;
    }
  }
  for (const auto& [name, value] : before) {
    if (!after.contains(name)) {
      changes[name] = "(removed)";
    }
  }
  return changes;
}

std::map<std::string, std::string> OwnEnvironment() {
  std::map<std::string, std::string> variables;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const char* const equals = std::strchr(*entry, '=');
    variables[std::string(static_cast<const char*>(*entry), equals)] = equals + 1;
  }
  return variables;
}

TEST(LaunchSequence, TheCallersMapIsAllThatIsSetBesidesTheFixedVariables) {
  InstalledRuntime world;
  world.Runtime().AddHost("6.0.1");
  const auto before = OwnEnvironment();

  const auto application = Launch({{u"DOTNET_EnableDiagnostics", u"0"}, {u"LAUNCH_TEST", u""}});

  const std::map<std::string, std::string> expected = {
      {"DOTNET_MULTILEVEL_LOOKUP", "0"}, {"DOTNET_EnableDiagnostics", "0"}, {"LAUNCH_TEST", ""}};
  EXPECT_EQ(Changes(before, OwnEnvironment()), expected);
  EXPECT_EQ(Changes(before, world.host.Call("loaded").environment), expected);
}

TEST(LaunchSequence, AnEmptyMapSetsNothingBesidesTheFixedVariables) {
  InstalledRuntime world;
  world.Runtime().AddHost("6.0.1");
  const auto before = OwnEnvironment();

  const auto application = Launch();

  EXPECT_EQ(Changes(before, world.host.Call("loaded").environment),
            (std::map<std::string, std::string>{{"DOTNET_MULTILEVEL_LOOKUP", "0"}}));
}

TEST(LaunchSequence, SettingsThatFailMakeNoLoader) {
  const tests::SettingsFile settings("LoaderLoggingDir=/tmp\n");
  const auto before = OwnEnvironment();

  EXPECT_EQ(Launch({{u"LAUNCH_TEST", u"1"}}), nullptr);

  EXPECT_EQ(OwnEnvironment(), before);
}

TEST(LaunchSequence, WithoutAHostItIsEmptyAndTheEnvironmentStaysSet) {
  InstalledRuntime world;

  EXPECT_EQ(Launch({{u"LAUNCH_TEST", u"1"}}), nullptr);

  EXPECT_EQ(Variable("LAUNCH_TEST"), "1");
  EXPECT_TRUE(world.host.Story().empty());
}

TEST(LaunchSequence, AnAssemblyThatCannotBeLoadedLeavesItEmptyAndTheHostUnloaded) {
  InstalledRuntime world;
  world.Runtime().AddHost("6.0.1");
  world.host.Returns(HostFunction::kInitialize, -2147450750);
  world.Apply();

  EXPECT_EQ(Launch(), nullptr);

  EXPECT_EQ(world.host.Story(), (Story{"6.0.1 loaded", "6.0.1 initialize", "6.0.1 unloaded"}));
}

TEST(LaunchSequence, WithAnySettingsNoLogFileIsCreated) {
  const tests::TempFolder logs;
  InstalledRuntime world("LoaderLoggingDir=" + logs.Path().string() + "\n");
  world.Runtime().AddHost("6.0.1");

  const auto application = Launch();

  EXPECT_NE(application, nullptr);
  EXPECT_TRUE(fs::is_empty(logs.Path()));
}

TEST(LaunchSequence, InTheDefaultLogFolderNoLogFileIsCreatedEither) {
  const tests::TempFolder logs;
  InstalledRuntime world;
  tests::ScopedEnvironment environment;
  environment.Set("TMP", logs.Path());

  EXPECT_EQ(Launch(), nullptr);

  EXPECT_TRUE(fs::is_empty(logs.Path()));
}

TEST(LaunchSequence, LeavesTheEmptyLoggerInstalledWhichNoFileLoggerReplaces) {
  const tests::TempFolder logs;
  const InstalledRuntime world;

  static_cast<void>(Launch());
  logger::InitGlobalFileLogger({logs.Path().u16string(), u"log"});

  EXPECT_TRUE(logger::IsEmptyLoggerCurrent());
  EXPECT_TRUE(fs::is_empty(logs.Path()));
}

TEST(LaunchSequence, AMissingSettingsFileThrowsBeforeTheLoggerIsReplaced) {
  const tests::TempFolder logs;
  logger::InitGlobalFileLogger({logs.Path().u16string(), u"log"});

  EXPECT_THROW(Launch(), std::system_error);

  EXPECT_FALSE(logger::IsEmptyLoggerCurrent());
  logger::ReleaseGlobalFileLogger();
}

TEST(LaunchSequence, SettingsThatAreNotUtf8Throw) {
  const tests::SettingsFile settings("DotnetRootFolder=/\xff\n");

  EXPECT_THROW(Launch(), std::bad_cast);
}

TEST(LaunchSequence, AVariableThatDoesNotConvertThrows) {
  const InstalledRuntime world;

  EXPECT_THROW(Launch({{u"LAUNCH_TEST", WideString(1, u'\xd800')}}), std::bad_cast);
}

TEST(LaunchSequence, WhatTheHostThrowsPassesAndTheHostStaysLoaded) {
  InstalledRuntime world;
  world.Runtime().AddHost("6.0.1");
  world.host.Throws(HostFunction::kInitialize, "int");
  world.Apply();

  EXPECT_THROW(Launch(), int);

  EXPECT_EQ(world.host.Story().back(), "6.0.1 initialize");
}

}  // namespace
}  // namespace netloader::quor
