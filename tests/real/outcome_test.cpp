// How a launch with a real .NET ends.
#include <csignal>
#include <filesystem>
#include <string>

#include "tests/real/installed_product.h"

namespace tests {
namespace {

using OutcomeOnRealDotnet = RealDotnet;

::testing::AssertionResult Contains(const std::string& text, const std::string& part) {
  return (text.find(part) != std::string::npos ? ::testing::AssertionSuccess() : ::testing::AssertionFailure())
         << "[" << part << "] in [" << text << "]";
}

TEST_F(OutcomeOnRealDotnet, EnvironmentExitIsTheExitStatus) {
  const InstalledProduct product(prepared_);

  EXPECT_EQ(product.Start({"exit", "7"}).Run().status, 7);
  EXPECT_EQ(product.Start({"exit", "0"}).Run().status, 0);
}

TEST_F(OutcomeOnRealDotnet, StatusThatTheProgramReturnsIsDropped) {
  const InstalledProduct product(prepared_);

  EXPECT_EQ(product.Start({"return", "3"}).Run().status, 0);
  EXPECT_EQ(product.StartWithoutLauncher({"return", "3"}).Run().status, 3);
}

TEST_F(OutcomeOnRealDotnet, ManagedExceptionEndsAsTheRuntimeEndsIt) {
  const InstalledProduct product(prepared_);

  const Outcome outcome = product.Start({"throw"}).Run();

  EXPECT_EQ(outcome.signal, SIGABRT) << outcome;
  EXPECT_EQ(outcome.err, product.StartWithoutLauncher({"throw"}).Run().err);
  EXPECT_TRUE(Contains(outcome.err, "System.InvalidOperationException: thrown because it was asked for"));
}

// The host has nothing to say about it unless its own tracing is on; neither has the launcher.
TEST_F(OutcomeOnRealDotnet, MissingAssemblyIsAFailureThatTheHostExplainsWhenItTraces) {
  const InstalledProduct product(prepared_);
  std::filesystem::remove(product.Assembly());

  const Outcome outcome = product.Start({"show"}).Run();
  const Outcome traced = product.Start({"show"}).Variable("COREHOST_TRACE", "1").Run();

  EXPECT_EQ(outcome.status, 255) << outcome;
  EXPECT_EQ(outcome.out + outcome.err, "");
  EXPECT_EQ(traced.status, 255) << traced;
  EXPECT_TRUE(Contains(traced.err, "Application '/opt/morvath/quor/lib64/grellin_utils.dll' does not exist.\n"));
}

TEST_F(OutcomeOnRealDotnet, AssemblyWithoutItsConfigurationIsAFailureInTheRuntimesOwnWords) {
  const InstalledProduct product(prepared_);
  std::filesystem::remove(product.Assembly().replace_extension(".runtimeconfig.json"));

  const Outcome outcome = product.Start({"show"}).Run();

  EXPECT_EQ(outcome.status, 255) << outcome;
  EXPECT_TRUE(Contains(outcome.err, "/opt/morvath/quor/lib64/grellin_utils.runtimeconfig.json"));
}

TEST_F(OutcomeOnRealDotnet, MissingFrameworkIsAFailureInTheRuntimesOwnWords) {
  RealRuntimeTree runtime(prepared_);
  runtime.AddRealHost("6.0.36");
  std::filesystem::remove(runtime.Root() / "shared");
  const InstalledProduct product(prepared_, runtime.Root());

  const Outcome outcome = product.Start({"show"}).Run();

  EXPECT_EQ(outcome.status, 255) << outcome;
  EXPECT_EQ(outcome.out, "");
  EXPECT_TRUE(Contains(outcome.err, "Framework: 'Microsoft.NETCore.App', version '"));
  EXPECT_FALSE(Contains(outcome.err, "Error occurred"));
}

TEST_F(OutcomeOnRealDotnet, NewestVersionThatLoadsRuns) {
  RealRuntimeTree runtime(prepared_);
  runtime.AddRealHost("6.0.9").AddRealHost("6.0.10").AddRealHost("7.0.1");
  const InstalledProduct product(prepared_, runtime.Root());

  EXPECT_TRUE(RanOn(runtime.HostFile("6.0.10"), product.Start({"show"}).Run()));
}

TEST_F(OutcomeOnRealDotnet, BrokenNewestVersionsArePassedOver) {
  RealRuntimeTree runtime(prepared_);
  runtime.AddRealHost("6.0.36");
  runtime.AddHostOfBytes("6.0.37", "").AddHostOfBytes("6.0.38", "not a library").AddFolder("6.0.39");
  runtime.AddLink("6.0.40/libhostfxr.so", prepared_.HostFile());
  const InstalledProduct product(prepared_, runtime.Root());

  const Outcome outcome = product.Start({"show"}).Run();

  EXPECT_TRUE(RanOn(runtime.HostFile("6.0.36"), outcome));
  EXPECT_EQ(outcome.err, "");
}

}  // namespace
}  // namespace tests
