// The environment that a real runtime and its program get from the launcher. For every variable that is removed, a
// control shows that it does what it is feared for when the launcher is not there.
#include <string>

#include "tests/real/installed_product.h"

namespace tests {
namespace {

using EnvironmentOnRealDotnet = RealDotnet;

constexpr const char* kHookWords = "The startup hook got in.\n";

TEST_F(EnvironmentOnRealDotnet, HostileVariablesAreGoneAndOthersStay) {
  const InstalledProduct product(prepared_);

  const Outcome outcome = product
                              .Start({"environment", "COMPlus_GCName", "DOTNET_GCName", "DOTNET_STARTUP_HOOKS",
                                      "DOTNET_gcServer", "GREETING", "EMPTY"})
                              .Variable("COMPlus_GCName", "libnone.so")
                              .Variable("DOTNET_GCName", "libnone.so")
                              .Variable("DOTNET_STARTUP_HOOKS", product.Assembly())
                              .Variable("DOTNET_gcServer", "0")
                              .Variable("GREETING", "good morning 😀")
                              .Variable("EMPTY", "")
                              .Run();

  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_EQ(outcome.out,
            "COMPlus_GCName is not set\n"
            "DOTNET_GCName is not set\n"
            "DOTNET_STARTUP_HOOKS is not set\n"
            "DOTNET_gcServer=\"0\"\n"
            "GREETING=\"good morning 😀\"\n"
            "EMPTY=\"\"\n");
}

TEST_F(EnvironmentOnRealDotnet, DiagnosticsAndOtherInstallLocationsAreOffWhateverWasSet) {
  const InstalledProduct product(prepared_);

  const Outcome outcome = product.Start({"environment", "DOTNET_EnableDiagnostics", "DOTNET_MULTILEVEL_LOOKUP"})
                              .Variable("DOTNET_EnableDiagnostics", "1")
                              .Variable("DOTNET_MULTILEVEL_LOOKUP", "1")
                              .Run();

  EXPECT_EQ(outcome.out, "DOTNET_EnableDiagnostics=\"0\"\nDOTNET_MULTILEVEL_LOOKUP=\"0\"\n") << outcome;
}

TEST_F(EnvironmentOnRealDotnet, StartupHookGetsInWithoutTheLauncher) {
  const InstalledProduct product(prepared_);

  const Outcome outcome =
      product.StartWithoutLauncher({"environment"}).Variable("DOTNET_STARTUP_HOOKS", product.Assembly()).Run();

  EXPECT_EQ(outcome.out, kHookWords) << outcome;
}

TEST_F(EnvironmentOnRealDotnet, CustomCollectorStopsTheRuntimeWithoutTheLauncher) {
  const InstalledProduct product(prepared_);

  for (const char* name : {"COMPlus_GCName", "DOTNET_GCName"}) {
    const Outcome outcome = product.StartWithoutLauncher({"environment"}).Variable(name, "libnone.so").Run();

    EXPECT_NE(outcome.status, 0) << name << ": " << outcome;
    EXPECT_NE(outcome.err, "") << name;
  }
}

TEST_F(EnvironmentOnRealDotnet, ProgramRunsWithoutTheLauncherWhenNothingIsHostile) {
  const InstalledProduct product(prepared_);

  const Outcome outcome = product.StartWithoutLauncher({"environment", "GREETING"}).Run();

  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_EQ(outcome.out, "GREETING is not set\n");
}

}  // namespace
}  // namespace tests
