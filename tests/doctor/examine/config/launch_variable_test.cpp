#include "doctor/examine/config/launch_variable.h"

#include <gtest/gtest.h>

#include "tests/support/scoped_environment.h"

namespace doctor {
namespace {

TEST(LaunchVariable, IsWhatALaunchMakesOfIt) {
  tests::ScopedEnvironment environment;
  environment.Set("DOTNET_STARTUP_HOOKS", "/x").Set("DOTNET_EnableDiagnostics", "1").Set("OTHER", "kept");

  EXPECT_EQ(LaunchVariable("DOTNET_STARTUP_HOOKS"), std::nullopt) << "a launch removes it";
  EXPECT_EQ(LaunchVariable("DOTNET_EnableDiagnostics"), "0") << "a launch sets it";
  EXPECT_EQ(LaunchVariable("OTHER"), "kept");
  EXPECT_EQ(LaunchVariable("NOT_SET"), std::nullopt);
}

}  // namespace
}  // namespace doctor
