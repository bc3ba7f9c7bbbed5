#include "netloader/netloaderhostfxr/src/loadermodule.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

#include "tests/netloader/netloaderhostfxr/src/interposed_calls.h"
#include "tests/netloader/netloaderhostfxr/src/loader_world.h"

namespace netloader {
namespace {

using tests::HostVariant;
using tests::Lines;
using tests::LoaderWorld;
using tests::operator+;
using tests::Variable;
using tov::WideString;

TEST(LoaderModule, LogsItsParametersWhenItIsMade) {
  const LoaderWorld world;

  const LoaderModule loader(world.Parameters());

  EXPECT_EQ(world.log.Lines(), (Lines{world.CreatedLine()}));
}

TEST(LoaderModule, LogsEmptyParametersAndOnesThatDoNotConvertAsNothing) {
  const LoaderWorld world;

  const LoaderModule loader({{}, WideString(1, u'\xd800'), {}, {}});

  EXPECT_EQ(world.log.Lines(), (Lines{"TRACE\tLoaderModule: Created with params: dotnetRootPath = '', "
                                      "dotnetVersionPrefix = '', productRoot = '', hostFxrSegment = 'libhostfxr.so'"}));
}

TEST(LoaderModule, WithAnEmptyMapOnlyTheFixedVariablesAreSet) {
  const LoaderWorld world;
  tests::ScopedEnvironment environment({{"DOTNET_MULTILEVEL_LOOKUP", "1"},
                                        {"COMPlus_GCName", "a"},
                                        {"DOTNET_GCName", "b"},
                                        {"DOTNET_STARTUP_HOOKS", "c"},
                                        {"DOTNET_ROOT", "/mine"}});

  const LoaderModule loader(world.Parameters());

  EXPECT_EQ(Variable("DOTNET_MULTILEVEL_LOOKUP"), "0");
  EXPECT_EQ(Variable("COMPlus_GCName"), std::nullopt);
  EXPECT_EQ(Variable("DOTNET_GCName"), std::nullopt);
  EXPECT_EQ(Variable("DOTNET_STARTUP_HOOKS"), std::nullopt);
  EXPECT_EQ(Variable("DOTNET_ROOT"), "/mine");
}

TEST(LoaderModule, AnEntryOfTheMapWinsOverAFixedVariable) {
  const LoaderWorld world;
  auto parameters = world.Parameters();
  parameters.environmentVariables = {{u"DOTNET_STARTUP_HOOKS", u"mine"}, {u"DOTNET_MULTILEVEL_LOOKUP", u"1"}};

  const LoaderModule loader(parameters);

  EXPECT_EQ(Variable("DOTNET_STARTUP_HOOKS"), "mine");
  EXPECT_EQ(Variable("DOTNET_MULTILEVEL_LOOKUP"), "1");
}

TEST(LoaderModule, AnEntryWithoutANameIsSkippedAndOneWithoutAValueIsSetToNothing) {
  const LoaderWorld world;
  tests::ScopedEnvironment environment;
  environment.Remove("LOADER_TEST_EMPTY").Remove("LOADER_TEST_LAST");
  auto parameters = world.Parameters();
  parameters.environmentVariables = {{u"", u"x"}, {u"LOADER_TEST_EMPTY", u""}, {u"LOADER_TEST_LAST", u"y"}};

  const LoaderModule loader(parameters);

  EXPECT_EQ(Variable(""), std::nullopt);
  EXPECT_EQ(Variable("LOADER_TEST_EMPTY"), "");
  EXPECT_EQ(Variable("LOADER_TEST_LAST"), "y");
}

TEST(LoaderModule, TheMapIsAppliedInTheOrderOfItsNamesUpToOneThatDoesNotConvert) {
  const LoaderWorld world;
  tests::ScopedEnvironment environment;
  environment.Remove("LOADER_TEST_A").Remove("LOADER_TEST_B").Remove("LOADER_TEST_C").Remove("LOADER_TEST_a");
  auto parameters = world.Parameters();
  parameters.environmentVariables = {{u"LOADER_TEST_a", u"4"},
                                     {u"LOADER_TEST_B", u"2"},
                                     {u"LOADER_TEST_A", u"1"},
                                     {u"LOADER_TEST_C", WideString(1, u'\xd800')}};

  EXPECT_THROW(LoaderModule{parameters}, std::bad_cast);

  EXPECT_EQ(Variable("LOADER_TEST_A"), "1");
  EXPECT_EQ(Variable("LOADER_TEST_B"), "2");
  EXPECT_EQ(Variable("LOADER_TEST_C"), std::nullopt);
  EXPECT_EQ(Variable("LOADER_TEST_a"), std::nullopt);
  EXPECT_EQ(Variable("DOTNET_MULTILEVEL_LOOKUP"), "0");
  EXPECT_TRUE(world.log.Lines().empty());
}

TEST(LoaderModule, OrdersByTheNumberAfterThePrefixReadWithBaseZeroOnPurpose) {
  const LoaderWorld world;
  const LoaderModule loader(world.Parameters());
  struct Row {
    WideString newer;
    WideString older;
  };
  for (const Row& row : std::to_array<Row>({
           {u"6.0.10", u"6.0.9"},
           {u"6.0.9", u"6.0.010"},  // octal 8
           {u"6.0.010", u"6.0.7"},
           {u"6.0.1", u"6.0.08"},     // no octal digit: 0
           {u"6.0.0x10", u"6.0.15"},  // hexadecimal
           {u"6.0.17", u"6.0.0x10"},
           {u"6.0.1", u"6.0.rc"},
           {u"6.0.", u"6.0.-1"},
       })) {
    SCOPED_TRACE(testing::PrintToString(row.newer) + " and " + testing::PrintToString(row.older));
    EXPECT_TRUE(loader.VersionSortPredicate(row.newer, row.older));
    EXPECT_FALSE(loader.VersionSortPredicate(row.older, row.newer));
  }
}

TEST(LoaderModule, NeitherOfTwoEqualNumbersComesFirst) {
  const LoaderWorld world;
  const LoaderModule loader(world.Parameters());

  EXPECT_FALSE(loader.VersionSortPredicate(u"6.0.8", u"6.0.010"));
  EXPECT_FALSE(loader.VersionSortPredicate(u"6.0.010", u"6.0.8"));
  EXPECT_FALSE(loader.VersionSortPredicate(u"6.0.08", u"6.0.0"));
}

TEST(LoaderModule, ThePredicateRefusesANameThatIsShorterThanThePrefix) {
  const LoaderWorld world;
  const LoaderModule loader(world.Parameters());
  const auto textOf = [&](const WideString& a, const WideString& b) -> std::string {
    try {
      static_cast<void>(loader.VersionSortPredicate(a, b));
    } catch (const std::out_of_range& failure) {
      return failure.what();
    }
    return "nothing was thrown";
  };

  EXPECT_EQ(textOf(u"6", u"6.0.1"), "tov::basic_string_t::append()");
  EXPECT_EQ(textOf(u"6.0.1", u"6.0"), "tov::basic_string_t::append()");
}

TEST(LoadDotNet, BindsAWholeHost) {
  LoaderWorld world;
  world.runtime.AddHost("6.0.1");
  LoaderModule loader(world.Parameters());

  EXPECT_TRUE(loader.LoadDotNet(world.Wide("6.0.1")));

  EXPECT_EQ(world.log.Lines(), (Lines{world.CreatedLine()} + LoaderWorld::LoadedLines(world.File("6.0.1"))));
  EXPECT_EQ(world.host.Story(), (Lines{"6.0.1 loaded"}));
}

TEST(LoadDotNet, DestroyingTheLoaderClosesTheLibraryExactlyOnce) {
  LoaderWorld world;
  world.runtime.AddHost("6.0.1");
  {
    LoaderModule loader(world.Parameters());
    ASSERT_TRUE(loader.LoadDotNet(world.Wide("6.0.1")));
    ASSERT_NE(::dlopen(world.File("6.0.1").c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr);
  }
  ASSERT_EQ(world.host.Story(), (Lines{"6.0.1 loaded"}));  // Closed twice it would be gone.

  void* const again = ::dlopen(world.File("6.0.1").c_str(), RTLD_NOW | RTLD_NOLOAD);
  ::dlclose(again);
  ::dlclose(again);

  EXPECT_EQ(world.host.Story(), (Lines{"6.0.1 loaded", "6.0.1 unloaded"}));
}

TEST(LoadDotNet, ARelativePathIsProhibited) {
  const LoaderWorld world;
  for (const WideString& path : std::to_array<WideString>({u"", u"libhostfxr.so", u"./libhostfxr.so"})) {
    const std::string text(path.begin(), path.end());
    SCOPED_TRACE("'" + text + "'");
    LoaderModule loader(world.Parameters());

    EXPECT_FALSE(loader.LoadDotNet(path));

    EXPECT_EQ(world.log.Lines().back(),
              "ERROR\tLoaderModule: Loading from relative path is prohibited path: '" + text + "'");
  }
  EXPECT_EQ(world.log.Lines().size(), 6U);
}

struct BrokenLibrary {
  const char* name;
  std::string bytes;
};

TEST(LoadDotNet, ALineAboutALibraryThatDoesNotOpenEndsAfterItsOpeningQuoteOnPurpose) {
  const std::string whole = tests::ReadFile(tests::HostLibrary());
  for (const auto& [name, bytes] : std::to_array<BrokenLibrary>({
           {"empty", ""},
           {"text", "text"},
           {"cut short", whole.substr(0, whole.size() / 2)},
           {"what only the dynamic loader finds", tests::ReadFile(tests::HostLibrary(HostVariant::kUnresolved))},
       })) {
    SCOPED_TRACE(name);
    LoaderWorld world;
    world.runtime.AddHostOfBytes("6.0.1", bytes);
    LoaderModule loader(world.Parameters());

    EXPECT_FALSE(loader.LoadDotNet(world.Wide("6.0.1")));

    EXPECT_EQ(world.log.Lines(), (Lines{world.CreatedLine()} + LoaderWorld::NotOpenedLines(world.File("6.0.1"))));
  }
}

TEST(LoadDotNet, AMissingLibraryDoesNotOpen) {
  const LoaderWorld world;
  LoaderModule loader(world.Parameters());

  EXPECT_FALSE(loader.LoadDotNet(world.Wide("6.0.1")));

  EXPECT_EQ(world.log.Lines(), (Lines{world.CreatedLine()} + LoaderWorld::NotOpenedLines(world.File("6.0.1"))));
}

TEST(LoadDotNet, AnOlderErrorOfTheDynamicLoaderIsNotQuoted) {
  LoaderWorld world;
  world.runtime.AddHostOfBytes("6.0.1", "text");
  LoaderModule loader(world.Parameters());
  ASSERT_EQ(::dlopen("/no/such/library", RTLD_NOW), nullptr);

  EXPECT_FALSE(loader.LoadDotNet(world.Wide("6.0.1")));

  EXPECT_EQ(world.log.Lines().back(), "ERROR\tLoaderModule: Loading hostfxr library completed with error: '");
}

TEST(LoadDotNet, WhatTheDynamicLoaderSaysWhenItIsAskedAgainIsQuoted) {
  LoaderWorld world;
  world.runtime.AddHost("6.0.1", HostVariant::kUnresolved);
  LoaderModule loader(world.Parameters());
  const tests::ScriptedLoaderErrors errors({"first", "second"});

  EXPECT_FALSE(loader.LoadDotNet(world.Wide("6.0.1")));

  EXPECT_EQ(world.log.Lines().back(), "ERROR\tLoaderModule: Loading hostfxr library completed with error: 'second'");
}

TEST(LoadDotNet, APathThatDoesNotConvertDoesNotOpen) {
  const LoaderWorld world;
  LoaderModule loader(world.Parameters());
  const WideString path(5001, u'/');
  const tests::FailingAllocation fault(path.size() + 1);
  static_cast<void>(::dlerror());

  EXPECT_FALSE(loader.LoadDotNet(path));

  EXPECT_EQ(world.log.Lines(),
            (Lines{world.CreatedLine()} + LoaderWorld::NotOpenedLines(std::string(path.size(), '/'))));
}

TEST(LoadDotNet, AFailedOpeningClosesTheLibraryThatWasOpenBefore) {
  LoaderWorld world;
  world.runtime.AddHost("6.0.1");
  LoaderModule loader(world.Parameters());
  ASSERT_TRUE(loader.LoadDotNet(world.Wide("6.0.1")));

  EXPECT_FALSE(loader.LoadDotNet(world.Wide("6.0.2")));

  EXPECT_EQ(world.host.Story(), (Lines{"6.0.1 loaded", "6.0.1 unloaded"}));
}

TEST(LoadDotNet, TheHandleIsOverwrittenOnPurposeWithoutClosingTheLibraryBefore) {
  LoaderWorld world;
  world.runtime.AddHost("6.0.1").AddHost("6.0.2");
  {
    LoaderModule loader(world.Parameters());
    ASSERT_TRUE(loader.LoadDotNet(world.Wide("6.0.1")));
    ASSERT_TRUE(loader.LoadDotNet(world.Wide("6.0.2")));
    EXPECT_EQ(world.host.Story(), (Lines{"6.0.1 loaded", "6.0.2 loaded"}));
  }
  EXPECT_EQ(world.host.Story(), (Lines{"6.0.1 loaded", "6.0.2 loaded", "6.0.2 unloaded"}));

  void* const forgotten = ::dlopen(world.File("6.0.1").c_str(), RTLD_NOW | RTLD_NOLOAD);
  ASSERT_NE(forgotten, nullptr);
  ::dlclose(forgotten);
  ::dlclose(forgotten);
}

struct MissingFunction {
  HostVariant variant;
  const char* function;
};

constexpr auto kMissingFunctions = std::to_array<MissingFunction>({
    {HostVariant::kLacksInitialize, "hostfxr_initialize_for_dotnet_command_line"},
    {HostVariant::kLacksRun, "hostfxr_run_app"},
    {HostVariant::kLacksClose, "hostfxr_close"},
});

TEST(LoadDotNet, AMissingFunctionIsLoggedAndTheLibraryClosed) {
  for (const auto& [variant, function] : kMissingFunctions) {
    SCOPED_TRACE(function);
    LoaderWorld world;
    world.runtime.AddHost("6.0.1", variant);
    LoaderModule loader(world.Parameters());

    EXPECT_FALSE(loader.LoadDotNet(world.Wide("6.0.1")));

    const std::string name(function);
    EXPECT_EQ(world.log.Lines(),
              (Lines{world.CreatedLine(), "TRACE\tLoaderModule: hostfxr library loaded: '" + world.File("6.0.1") + "'",
                     "ERROR\tLoaderModule: Failed to load " + name + " function: '" + world.File("6.0.1") + "'",
                     "ERROR\tLoaderModule: Loading " + name + " function completed with error: '"}));
    EXPECT_EQ(world.host.Story(), (Lines{"6.0.1 loaded", "6.0.1 unloaded"}));
  }
}

TEST(LoadDotNet, AFunctionThatIsNullWithoutAnyWordsOfTheDynamicLoaderIsMissing) {
  LoaderWorld world;
  world.runtime.AddHost("6.0.1", HostVariant::kNullRun);
  LoaderModule loader(world.Parameters());

  EXPECT_FALSE(loader.LoadDotNet(world.Wide("6.0.1")));

  EXPECT_EQ(world.log.Lines().back(), "ERROR\tLoaderModule: Loading hostfxr_run_app function completed with error: '");
  EXPECT_EQ(world.host.Story(), (Lines{"6.0.1 loaded", "6.0.1 unloaded"}));
}

TEST(LoadDotNet, ALibraryStaysOpenOnPurposeWhenAFunctionIsNullAndTheErrorTextIsEmpty) {
  for (const auto& [variant, function] : kMissingFunctions) {
    SCOPED_TRACE(function);
    LoaderWorld world;
    world.runtime.AddHost("6.0.1", variant);
    {
      LoaderModule loader(world.Parameters());
      const tests::ScriptedLoaderErrors errors({""});

      EXPECT_FALSE(loader.LoadDotNet(world.Wide("6.0.1")));

      EXPECT_EQ(
          world.log.Lines(),
          (Lines{world.CreatedLine(), "TRACE\tLoaderModule: hostfxr library loaded: '" + world.File("6.0.1") + "'",
                 "ERROR\tLoaderModule: Failed to get necessary functions from hostfxr library"}));
      EXPECT_EQ(world.host.Story(), (Lines{"6.0.1 loaded"}));
    }
    EXPECT_EQ(world.host.Story(), (Lines{"6.0.1 loaded", "6.0.1 unloaded"}));
  }
}

TEST(LogFunctionLoadError, WritesTwoLinesOfWhichTheSecondEndsAfterItsOpeningQuote) {
  const tests::CapturedLog log;
  static_cast<void>(::dlerror());

  LogFunctionLoadError(u"/a/b", u"function_x");

  EXPECT_EQ(log.Lines(), (Lines{"ERROR\tLoaderModule: Failed to load function_x function: '/a/b'",
                                "ERROR\tLoaderModule: Loading function_x function completed with error: '"}));
}

TEST(LogFunctionLoadError, QuotesTheDynamicLoaderWhenItHasWords) {
  const tests::CapturedLog log;
  const tests::ScriptedLoaderErrors errors({"no such thing"});

  LogFunctionLoadError(u"/a/b", u"function_x");

  EXPECT_EQ(log.Lines(),
            (Lines{"ERROR\tLoaderModule: Failed to load function_x function: '/a/b'",
                   "ERROR\tLoaderModule: Loading function_x function completed with error: 'no such thing'"}));
}

}  // namespace
}  // namespace netloader
