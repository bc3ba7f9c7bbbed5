#include "doctor/examine/probe.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <stdexcept>

#include "doctor/judge/words/text.h"
#include "tests/support/odd_host.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/stand_in_host.h"

namespace {

bool has_reasons = true;
using LoaderErrorFunction = char* (*)();

LoaderErrorFunction RealLoaderError() {
  static const auto real = reinterpret_cast<LoaderErrorFunction>(::dlsym(RTLD_NEXT, "dlerror"));
  return real;
}

// Looked up before there is an error, which the looking up would forget.
[[maybe_unused]] const LoaderErrorFunction looked_up_early = RealLoaderError();

}  // namespace

// In place of the C library's: a dynamic loader without words.
extern "C" char* dlerror() noexcept {
  static char none[] = "";
  return has_reasons ? RealLoaderError()() : none;
}

namespace doctor {
namespace {

using namespace std::chrono_literals;
using tests::HostFunction;
using tests::HostVariant;
using tests::StandInHost;

constexpr auto kLong = 60s;

tov::WideString Wide(const std::filesystem::path& path) {
  return ToUtf16(path.string());
}

ContextProbe Context(const StandInHost& host, std::chrono::milliseconds limit = kLong) {
  const tests::ScopedEnvironment environment(host.Environment());
  return ProbeContext(Wide(tests::HostLibrary()), u"/root", u"/app.dll", {limit});
}

TEST(LibraryProbe, AWholeHostIsGoodAndNothingOfItIsCalled) {
  const StandInHost host;
  const tests::ScopedEnvironment environment(host.Environment());

  const LibraryProbe probe = ProbeLibrary(Wide(tests::HostLibrary()), {kLong});

  EXPECT_TRUE(probe.IsGood());
  ASSERT_EQ(host.Calls().size(), 1U);
  EXPECT_EQ(host.Calls().front().name, "loaded");
}

TEST(LibraryProbe, IsMadeInTheEnvironmentOfALaunch) {
  const StandInHost host;
  tests::ScopedEnvironment environment(host.Environment());
  environment.Set("DOTNET_STARTUP_HOOKS", "x").Set("DOTNET_EnableDiagnostics", "1");

  static_cast<void>(ProbeLibrary(Wide(tests::HostLibrary()), {kLong}));

  EXPECT_EQ(host.Call("loaded").Variable("DOTNET_STARTUP_HOOKS"), "(not set)");
  EXPECT_EQ(host.Call("loaded").Variable("DOTNET_EnableDiagnostics"), "0");
  EXPECT_EQ(tests::Variable("DOTNET_EnableDiagnostics"), "1") << "this process's own";
}

TEST(LibraryProbe, ABrokenHostIsReportedWithItsReason) {
  struct Row {
    const char* missing;
    const char* error;
    HostVariant variant;
  };
  const Row rows[] = {
      {"hostfxr_initialize_for_dotnet_command_line", "undefined symbol", HostVariant::kLacksInitialize},
      {"hostfxr_run_app", "undefined symbol", HostVariant::kLacksRun},
      {"hostfxr_close", "undefined symbol", HostVariant::kLacksClose},
      {"", "stand_in_function_that_no_library_has", HostVariant::kUnresolved},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.missing);
    const LibraryProbe probe = ProbeLibrary(Wide(tests::HostLibrary(row.variant)), {kLong});

    EXPECT_FALSE(probe.IsGood());
    EXPECT_EQ(probe.missing, row.missing);
    EXPECT_NE(probe.error.find(row.error), std::string::npos) << probe.error;
  }
}

TEST(LibraryProbe, AFunctionThatIsNullForNoReasonIsReportedAsThat) {
  has_reasons = false;
  const LibraryProbe probe = ProbeLibrary(Wide(tests::HostLibrary(HostVariant::kNullRun)), {kLong});
  has_reasons = true;

  EXPECT_FALSE(probe.IsGood());
  EXPECT_EQ(probe.missing, "hostfxr_run_app");
  EXPECT_EQ(probe.error, "a null pointer");
}

TEST(LibraryProbe, WhateverALibraryDoesWhileItIsLoadedIsAFinding) {
  struct Row {
    const char* name;
    std::string_view variant;
    ChildEnd end;
    int code;
    const char* output;
  };
  const Row rows[] = {
      {"segmentation fault", "comes_Crash", ChildEnd::kCrashed, SIGSEGV, ""},
      {"bus error", "comes_BusError", ChildEnd::kCrashed, SIGBUS, ""},
      // The dynamic loader lets no exception pass.
      {"throws", "comes_ThrowError", ChildEnd::kCrashed, SIGABRT, "no mood to be loaded"},
      {"throws a number", "comes_ThrowNumber", ChildEnd::kCrashed, SIGABRT, "terminate called"},
      {"exits", "comes_Exit", ChildEnd::kExited, 17, ""},
      {"talks", "comes_Talk", ChildEnd::kFinished, 0, "words of a library\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    // What a sanitizer does about a signal is not the library's doing.
    const auto segmentation_fault = std::signal(SIGSEGV, SIG_DFL);
    const auto bus_error = std::signal(SIGBUS, SIG_DFL);

    const LibraryProbe probe = ProbeLibrary(Wide(tests::OddHost(row.variant)), {kLong});

    std::signal(SIGSEGV, segmentation_fault);
    std::signal(SIGBUS, bus_error);
    EXPECT_EQ(probe.child.end, row.end);
    EXPECT_EQ(probe.child.code, row.code);
    EXPECT_NE(probe.child.output.find(row.output), std::string::npos) << probe.child.output;
    EXPECT_EQ(probe.IsGood(), row.end == ChildEnd::kFinished);
  }
}

TEST(LibraryProbe, ALibraryThatHangsIsGivenUpAtTheLimit) {
  const LibraryProbe probe = ProbeLibrary(Wide(tests::OddHost("comes_Hang")), {100ms});

  EXPECT_EQ(probe.child.end, ChildEnd::kTimedOut);
  EXPECT_FALSE(probe.IsGood());
}

TEST(ContextProbe, AHostThatCannotBeLoadedAnyMoreIsNoFindingButAFailure) {
  const tov::WideString hosts[] = {u"/nothing/there", Wide(tests::HostLibrary(HostVariant::kLacksRun)),
                                   Wide(tests::HostLibrary(HostVariant::kNullRun))};
  for (const tov::WideString& host : hosts) {
    EXPECT_THROW(ProbeContext(host, u"/root", u"/app.dll", {kLong}), std::runtime_error) << ToUtf8(host);
  }
}

TEST(ContextProbe, AFunctionThatIsNullForNoReasonIsAFailureAsWell) {
  has_reasons = false;
  EXPECT_THROW(ProbeContext(Wide(tests::HostLibrary(HostVariant::kNullRun)), u"/root", u"/app.dll", {kLong}),
               std::runtime_error);
  has_reasons = true;
}

TEST(ContextProbe, CreatesTheContextOfALaunchWithoutArgumentsClosesItAndRunsNothing) {
  const StandInHost host;

  const ContextProbe probe = Context(host);

  EXPECT_TRUE(probe.IsUsable());
  EXPECT_EQ(probe.result, 0);
  EXPECT_TRUE(probe.has_handle);
  std::vector<std::string> calls;
  for (const auto& call : host.Calls()) {
    calls.push_back(call.name);
  }
  EXPECT_EQ(calls, (std::vector<std::string>{"loaded", "initialize", "get_runtime_property_value", "close"}));
  const auto call = host.Call("initialize");
  EXPECT_EQ(call.arguments, std::vector<std::string>{"/app.dll"});
  EXPECT_EQ(call.fields.at("dotnet_root"), "/root");
  EXPECT_EQ(call.fields.at("host_path"), tests::HostLibrary().string());
  EXPECT_EQ(call.Variable("DOTNET_EnableDiagnostics"), "0");
}

TEST(ContextProbe, HoldsTheAssembliesThatTheRuntimeIsToKnow) {
  StandInHost host;
  EXPECT_EQ(Context(host).assemblies, "") << "a host that does not say";

  host.Knows({"/a.dll", "/b.dll"});

  EXPECT_EQ(Context(host).assemblies, "/a.dll:/b.dll:");
}

TEST(ContextProbe, ARefusalIsReportedWithStatusErrnoAndTheHostsWords) {
  StandInHost host;
  host.Returns(HostFunction::kInitialize, static_cast<int>(0x80008096)).Says(HostFunction::kInitialize, "no framework");
  host.SetsErrno(HostFunction::kInitialize, EACCES).GivesNoHandle();

  const ContextProbe probe = Context(host);

  EXPECT_EQ(probe.child.end, ChildEnd::kFinished);
  EXPECT_EQ(static_cast<std::uint32_t>(probe.result), 0x80008096U);
  EXPECT_FALSE(probe.has_handle);
  EXPECT_FALSE(probe.IsUsable());
  EXPECT_EQ(probe.error, static_cast<std::uint32_t>(EACCES));
  EXPECT_EQ(probe.host_text, "no framework\n");
}

TEST(ContextProbe, OnlySuccessWithAHandleIsUsable) {
  StandInHost other_success;
  other_success.Returns(HostFunction::kInitialize, 1);
  StandInHost no_handle;
  no_handle.GivesNoHandle();

  EXPECT_TRUE(Context(other_success).has_handle);
  EXPECT_FALSE(Context(other_success).IsUsable());
  EXPECT_EQ(Context(no_handle).result, 0);
  EXPECT_FALSE(Context(no_handle).IsUsable());
}

TEST(ContextProbe, AnExceptionOfAClassOfTheHostsOwnKeepsItsWords) {
  StandInHost throws;
  throws.ThrowsOwnClass(HostFunction::kInitialize, "its own words");

  const ContextProbe probe = Context(throws);

  EXPECT_EQ(probe.child.end, ChildEnd::kThrew);
  EXPECT_EQ(probe.child.message, "its own words");
}

TEST(ContextProbe, AHostThatThrowsOrExitsIsAFinding) {
  StandInHost throws;
  throws.Throws(HostFunction::kInitialize, "its words");
  StandInHost exits;
  exits.Exits(HostFunction::kInitialize, 5);

  EXPECT_EQ(Context(throws).child.end, ChildEnd::kThrew);
  EXPECT_EQ(Context(throws).child.message, "its words");
  EXPECT_EQ(Context(exits).child.end, ChildEnd::kExited);
  EXPECT_EQ(Context(exits).child.code, 5);
}

}  // namespace
}  // namespace doctor
