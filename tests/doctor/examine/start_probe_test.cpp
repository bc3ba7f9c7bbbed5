#include "doctor/examine/start_probe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <stdexcept>

#include "doctor/judge/words/text.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/stand_in_host.h"

namespace doctor {
namespace {

using namespace std::chrono_literals;
using tests::HostFunction;
using tests::HostVariant;
using tests::StandInHost;

constexpr auto kInvalidArgument = static_cast<int>(0x80008081);
constexpr auto kUnsupportedScenario = static_cast<int>(0x800080a6);

StartProbe Start(const StandInHost& host, HostVariant variant = HostVariant::kWhole) {
  const tests::ScopedEnvironment environment(host.Environment());
  return ProbeStart(ToUtf16(tests::HostLibrary(variant).string()), u"/root", u"/app.dll", {60s});
}

std::vector<std::string> TypesAskedFor(const StandInHost& host) {
  std::vector<std::string> types;
  for (const auto& call : host.Calls()) {
    if (call.name == "get_runtime_delegate") {
      types.push_back(call.fields.at("type"));
    }
  }
  return types;
}

TEST(StartProbe, AHostThatCannotBeLoadedAnyMoreIsNoFindingButAFailure) {
  EXPECT_THROW(ProbeStart(ToUtf16(tests::HostLibrary(HostVariant::kLacksRun).string()), u"/root", u"/app.dll", {60s}),
               std::runtime_error);
}

TEST(StartProbe, StartsTheRuntimeOfALaunchWithoutArgumentsAndRunsNothing) {
  const StandInHost host;

  const StartProbe probe = Start(host);

  EXPECT_TRUE(probe.HasStarted());
  EXPECT_EQ(TypesAskedFor(host), std::vector<std::string>{"6"});
  const auto call = host.Call("initialize");
  EXPECT_EQ(call.arguments, std::vector<std::string>{"/app.dll"});
  EXPECT_EQ(call.fields.at("dotnet_root"), "/root");
  EXPECT_EQ(call.fields.at("host_path"), tests::HostLibrary().string());
  EXPECT_EQ(host.Call("get_runtime_delegate").Variable("DOTNET_EnableDiagnostics"), "0");
  EXPECT_EQ(host.VersionThatRan(), "");
}

// Its threads go on until the process ends.
TEST(StartProbe, ARuntimeThatWasStartedIsNotUnloaded) {
  const StandInHost host;

  static_cast<void>(Start(host));

  EXPECT_EQ(std::ranges::count(host.Calls(), "loaded", &tests::HostCall::name), 1);
  EXPECT_EQ(std::ranges::count(host.Calls(), "unloaded", &tests::HostCall::name), 0);
}

TEST(StartProbe, ARuntimeThatDoesNotStartIsReportedWithItsResultAndTheHostsWords) {
  StandInHost host;
  host.Returns(HostFunction::kStart, static_cast<int>(0x80004005)).Says(HostFunction::kStart, "no heap");

  const StartProbe probe = Start(host);

  EXPECT_TRUE(probe.was_tried);
  EXPECT_FALSE(probe.HasStarted());
  EXPECT_EQ(static_cast<std::uint32_t>(probe.result), 0x80004005U);
  EXPECT_EQ(probe.host_text, "no heap\n");
  EXPECT_EQ(TypesAskedFor(host).size(), 1U) << "the failure was the runtime's, so the other type would tell no more";
}

// A host may have much to say, or never stop; the cause comes first.
TEST(StartProbe, OfAHostsWordsTheBeginningIsKept) {
  constexpr std::size_t kKept = 65536;
  StandInHost host;
  host.Says(HostFunction::kInitialize, std::string(kKept + 1, 'i')).Says(HostFunction::kStart, "later");

  EXPECT_EQ(Start(host).host_text.size(), kKept + std::string("\n").size());
}

TEST(StartProbe, AHostThatRefusesOneTypeOfFunctionIsAskedForTheOther) {
  StandInHost host;
  host.OffersOnly(5);

  EXPECT_TRUE(Start(host).HasStarted());
  EXPECT_EQ(TypesAskedFor(host), (std::vector<std::string>{"6", "5"}));
}

TEST(StartProbe, AHostThatOffersNoSuchFunctionHasNotTried) {
  for (const int status : {kInvalidArgument, kUnsupportedScenario}) {
    StandInHost host;
    host.Returns(HostFunction::kStart, status);

    EXPECT_FALSE(Start(host).was_tried) << status;
    EXPECT_FALSE(Start(host).HasStarted()) << status;
  }
  const StandInHost older;
  EXPECT_FALSE(Start(older, HostVariant::kLacksStart).was_tried);
  EXPECT_EQ(Start(older, HostVariant::kLacksStart).child.end, ChildEnd::kFinished);
}

TEST(StartProbe, AHostThatGivesNoContextIsNotAskedToStart) {
  StandInHost host;
  host.GivesNoHandle();

  EXPECT_FALSE(Start(host).was_tried);
  EXPECT_TRUE(TypesAskedFor(host).empty());
}

TEST(StartProbe, ARuntimeThatEndsTheProcessIsAFinding) {
  StandInHost dies;
  dies.Dies(HostFunction::kStart, SIGBUS);
  StandInHost exits;
  exits.Exits(HostFunction::kStart, 5);
  StandInHost throws;
  throws.Throws(HostFunction::kStart, "its words");

  EXPECT_EQ(Start(dies).child.end, ChildEnd::kCrashed);
  EXPECT_EQ(Start(dies).child.code, SIGBUS);
  EXPECT_EQ(Start(exits).child.end, ChildEnd::kExited);
  EXPECT_EQ(Start(exits).child.code, 5);
  EXPECT_EQ(Start(throws).child.end, ChildEnd::kThrew);
  EXPECT_EQ(Start(throws).child.message, "its words");
}

TEST(StartProbe, AFunctionOfTheStartedRuntimeIsCalledAndMayEndTheProcess) {
  StandInHost answers;
  answers.Returns(HostFunction::kManaged, -1);
  StandInHost dies;
  dies.Dies(HostFunction::kManaged, SIGABRT);

  EXPECT_TRUE(Start(answers).HasStarted()) << "what the function gives is of no importance";
  EXPECT_EQ(answers.Call("managed").version, "whole");
  EXPECT_EQ(Start(dies).child.end, ChildEnd::kCrashed);
  EXPECT_EQ(Start(dies).child.code, SIGABRT);
}

TEST(StartProbe, TheFunctionIsOneThatEveryRuntimeHasWithinItself) {
  const std::string type = "Internal.Runtime.InteropServices.ComponentActivator, System.Private.CoreLib";
  const StandInHost any;
  StandInHost older;
  older.OffersOnly(5);

  static_cast<void>(Start(any));
  static_cast<void>(Start(older));

  EXPECT_EQ(any.Call("managed").fields.at("first"), type);
  EXPECT_EQ(any.Call("managed").fields.at("second"), "GetFunctionPointer");
  EXPECT_EQ(older.Call("managed").fields.at("first"), "") << "no assembly has to be loaded";
  EXPECT_EQ(older.Call("managed").fields.at("second"), type);
}

TEST(StartProbe, ARuntimeThatDiesIsAskedForNoDump) {
  const StandInHost host;
  tests::ScopedEnvironment environment;
  environment.Set("DOTNET_DbgEnableMiniDump", "1").Set("COMPlus_DbgEnableMiniDump", "1");

  static_cast<void>(Start(host));

  EXPECT_EQ(host.Call("get_runtime_delegate").Variable("DOTNET_DbgEnableMiniDump"), "(not set)");
  EXPECT_EQ(host.Call("get_runtime_delegate").Variable("COMPlus_DbgEnableMiniDump"), "(not set)");
}

}  // namespace
}  // namespace doctor
