#include "netloader/netloaderhostfxr/src/loader_module_factory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <type_traits>
#include <typeinfo>

#include "netloader/netloaderhostfxr/src/loadermodule.h"
#include "tests/netloader/netloaderhostfxr/src/loader_world.h"

namespace netloader {
namespace {

using tests::Lines;
using tests::LoaderWorld;
using tests::operator+;
using Factory = LoaderModuleInterfaceFactory;

static_assert(std::is_base_of_v<LoaderModuleInterface, LoaderModule>);
static_assert(std::is_base_of_v<std::enable_shared_from_this<LoaderModule>, LoaderModule>);

TEST(LoaderModuleFactory, HandsOutALoaderThatHasBoundAHost) {
  LoaderWorld world;
  world.runtime.AddHost("6.0.1");

  const auto loader = Factory::CreateModuleLoader(world.Parameters());

  EXPECT_NE(loader, nullptr);
  EXPECT_EQ(world.log.Lines(), (Lines{world.CreatedLine()} + world.FoundLines("6.0.1", true) +
                                Lines{world.AttemptLine("6.0.1")} + LoaderWorld::LoadedLines(world.File("6.0.1")) +
                                Lines{world.SuccessLine("6.0.1"),
                                      "TRACE\tLoaderModuleFactory: Module from '" + world.runtime.Root().string() +
                                          "' has been loaded successfully, versionPrefix = '6.0.', productRoot = "
                                          "'/product'"}));
  EXPECT_NE(loader->LoadAssembly(u"app.dll", 0, nullptr), nullptr);
}

TEST(LoaderModuleFactory, AFailureHasOneLineWhoseRootHasNoClosingQuoteOnPurpose) {
  const LoaderWorld world;

  const auto loader = Factory::CreateModuleLoader(world.Parameters());

  EXPECT_EQ(loader, nullptr);
  EXPECT_EQ(world.log.Lines(),
            (Lines{world.CreatedLine(), LoaderWorld::NothingLoadedLine(),
                   "TRACE\tLoaderModuleFactory: Failed to load module from '" + world.runtime.Root().string() +
                       ", versionPrefix = '6.0.', productRoot = '/product'"}));
}

TEST(LoaderModuleFactory, TheEnvironmentStaysSetWhenNoHostIsFound) {
  const LoaderWorld world;
  tests::ScopedEnvironment environment;
  environment.Set("DOTNET_GCName", "mine").Remove("LOADER_TEST");
  auto parameters = world.Parameters();
  parameters.environmentVariables = {{u"LOADER_TEST", u"1"}};

  EXPECT_EQ(Factory::CreateModuleLoader(parameters), nullptr);

  EXPECT_EQ(tests::Variable("LOADER_TEST"), "1");
  EXPECT_EQ(tests::Variable("DOTNET_GCName"), std::nullopt);
  EXPECT_EQ(tests::Variable("DOTNET_MULTILEVEL_LOOKUP"), "0");
}

TEST(LoaderModuleFactory, TheEnvironmentIsSetBeforeTheHostIsLoaded) {
  LoaderWorld world;
  world.runtime.AddHost("6.0.1");
  tests::ScopedEnvironment environment;
  environment.Set("DOTNET_STARTUP_HOOKS", "mine").Remove("LOADER_TEST");
  auto parameters = world.Parameters();
  parameters.environmentVariables = {{u"LOADER_TEST", u"1"}};

  const auto loader = Factory::CreateModuleLoader(parameters);

  const tests::HostCall loaded = world.host.Call("loaded");
  EXPECT_EQ(loaded.Variable("LOADER_TEST"), "1");
  EXPECT_EQ(loaded.Variable("DOTNET_MULTILEVEL_LOOKUP"), "0");
  EXPECT_EQ(loaded.Variable("DOTNET_STARTUP_HOOKS"), "(not set)");
}

TEST(LoaderModuleFactory, AVariableThatDoesNotConvertThrowsBeforeAnythingIsLookedFor) {
  const LoaderWorld world;
  auto parameters = world.Parameters();
  parameters.environmentVariables = {{u"LOADER_TEST", tov::WideString(1, u'\xdc00')}};

  EXPECT_THROW(Factory::CreateModuleLoader(parameters), std::bad_cast);

  EXPECT_TRUE(world.log.Lines().empty());
}

TEST(LoaderModuleFactory, TheHostIsUnloadedWhenTheLoaderGoes) {
  LoaderWorld world;
  world.runtime.AddHost("6.0.1");
  auto loader = Factory::CreateModuleLoader(world.Parameters());
  ASSERT_EQ(world.host.Story(), (Lines{"6.0.1 loaded"}));

  loader.reset();

  EXPECT_EQ(world.host.Story(), (Lines{"6.0.1 loaded", "6.0.1 unloaded"}));
}

}  // namespace
}  // namespace netloader
