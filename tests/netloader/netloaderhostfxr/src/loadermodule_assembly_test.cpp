// From a bound host to an application, line by line.
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "foundation/result_code_exception.h"
#include "netloader/netloaderhostfxr/src/assembly_path.h"
#include "netloader/netloaderhostfxr/src/loadermodule.h"
#include "tests/netloader/netloaderhostfxr/src/interposed_calls.h"
#include "tests/netloader/netloaderhostfxr/src/loader_world.h"

namespace netloader {
namespace {

using tests::HostFunction;
using tests::Lines;
using tests::LoaderWorld;
using tests::operator+;

constexpr const char* kLoadingLine = "TRACE\tLoaderModule: Loading library: 'app.dll'";
constexpr const char* kLoadingFromLine =
    "TRACE\tLoaderModule: Loading library from path: '/opt/morvath/quor/lib64/app.dll'";

// A world with one host, and a loader that has bound it.
class LoadAssembly : public testing::Test {
 protected:
  void SetUp() override {
    world_.runtime.AddHost("6.0.1");
    loader_ = std::make_shared<LoaderModule>(world_.Parameters());
    ASSERT_TRUE(loader_->LoadDotNetWithHigerVersion());
    lines_before_ = world_.log.Lines().size();
  }

  std::shared_ptr<LibraryInterface> Load(std::vector<const char*> arguments = {}) {
    world_.Apply();
    return loader_->LoadAssembly(u"app.dll", static_cast<int>(arguments.size()), arguments.data());
  }

  // What was logged since the host was bound.
  [[nodiscard]] Lines NewLines() const {
    const Lines lines = world_.log.Lines();
    return {lines.begin() + static_cast<std::ptrdiff_t>(lines_before_), lines.end()};
  }

  LoaderWorld world_;
  std::shared_ptr<LoaderModule> loader_;
  std::size_t lines_before_ = 0;
};

TEST_F(LoadAssembly, InitialisesAContextAndSaysSo) {
  const auto application = Load();

  EXPECT_NE(application, nullptr);
  EXPECT_EQ(NewLines(),
            (Lines{kLoadingLine, kLoadingFromLine,
                   "TRACE\tLoaderModule: Library context (hostfxr_handle) has been obtained successfully"}));
  EXPECT_EQ(world_.host.Story(), (Lines{"6.0.1 loaded", "6.0.1 initialize"}));
}

TEST_F(LoadAssembly, HandsTheHostItsRecordAndAHandleThatIsNull) {
  const auto application = Load();

  const tests::HostCall call = world_.host.Call("initialize");
  EXPECT_EQ(call.fields.at("size"), "24");
  EXPECT_EQ(call.fields.at("host_path"), world_.File("6.0.1"));
  EXPECT_EQ(call.fields.at("dotnet_root"), world_.runtime.Root());
  EXPECT_EQ(call.fields.at("handle"), "(nil)");
}

TEST_F(LoadAssembly, PutsTheAssemblyBeforeTheArguments) {
  const auto application = Load({"a", "", "-b c", "\xff\xf0\x9f\x98\x80"});

  const tests::HostCall call = world_.host.Call("initialize");
  EXPECT_EQ(call.fields.at("argc"), "5");
  EXPECT_EQ(call.arguments, (Lines{"/opt/morvath/quor/lib64/app.dll", "a", "", "-b c", "\xff\xf0\x9f\x98\x80"}));
}

TEST_F(LoadAssembly, PassesNoMoreArgumentsThanAreAnnounced) {
  std::array arguments{"a", "b", "c"};

  const auto application = loader_->LoadAssembly(u"app.dll", 2, arguments.data());

  EXPECT_EQ(world_.host.Call("initialize").arguments, (Lines{"/opt/morvath/quor/lib64/app.dll", "a", "b"}));
}

TEST_F(LoadAssembly, WithoutArgumentsANullArrayPassesTheAssemblyAlone) {
  for (const int count : {0, -1, INT_MIN}) {
    SCOPED_TRACE(count);
    world_.host.Forget();

    EXPECT_NE(loader_->LoadAssembly(u"app.dll", count, nullptr), nullptr);

    EXPECT_EQ(world_.host.Call("initialize").fields.at("argc"), "1");
    EXPECT_EQ(world_.host.Call("initialize").arguments, (Lines{"/opt/morvath/quor/lib64/app.dll"}));
  }
}

TEST_F(LoadAssembly, AnnouncedArgumentsThatAreNullThrowAPointerOnPurpose) {
  for (const int count : {1, 7}) {
    SCOPED_TRACE(count);
    try {
      loader_->LoadAssembly(u"app.dll", count, nullptr);
      ADD_FAILURE() << "nothing was thrown";
    } catch (const std::invalid_argument* thrown) {
      const std::unique_ptr<const std::invalid_argument> failure(thrown);
      EXPECT_STREQ(failure->what(), "argv is null");
    }
  }
  EXPECT_EQ(NewLines(), (Lines{kLoadingLine, kLoadingFromLine, kLoadingLine, kLoadingFromLine}));
  EXPECT_EQ(world_.host.Story(), (Lines{"6.0.1 loaded"}));
}

std::string FailedLine(int result, int error) {
  return "ERROR\tLoaderModule: Get library context (hostfxr_handle) failed for library: "
         "'/opt/morvath/quor/lib64/app.dll', result " +
         std::to_string(result) + ", lastErrorCode " + std::to_string(error);
}

TEST_F(LoadAssembly, EveryResultBut0IsAFailureOnPurposeAlsoTheSuccessCodes1And2) {
  for (const int result : {1, 2, 3, -1, -2147450750, INT_MAX, INT_MIN}) {
    SCOPED_TRACE(result);
    world_.host.Returns(HostFunction::kInitialize, result).SetsErrno(HostFunction::kInitialize, 13);

    EXPECT_EQ(Load(), nullptr);

    EXPECT_EQ(NewLines().back(), FailedLine(result, 13));
  }
  EXPECT_EQ(NewLines().size(), 7U * 3);
}

TEST_F(LoadAssembly, AHandleThatCameWithAnotherResultIsNotClosedOnPurpose) {
  world_.host.Returns(HostFunction::kInitialize, 1);

  EXPECT_EQ(Load(), nullptr);
  loader_.reset();

  EXPECT_EQ(world_.host.Story(), (Lines{"6.0.1 loaded", "6.0.1 initialize", "6.0.1 unloaded"}));
}

TEST_F(LoadAssembly, TheResult0WithoutAHandleIsAFailure) {
  world_.host.GivesNoHandle().SetsErrno(HostFunction::kInitialize, 2);

  EXPECT_EQ(Load(), nullptr);

  EXPECT_EQ(NewLines(), (Lines{kLoadingLine, kLoadingFromLine, FailedLine(0, 2)}));
}

TEST_F(LoadAssembly, TheErrorNumberIsUnsigned) {
  world_.host.Returns(HostFunction::kInitialize, -1).SetsErrno(HostFunction::kInitialize, -1);

  EXPECT_EQ(Load(), nullptr);

  EXPECT_EQ(NewLines().back(),
            "ERROR\tLoaderModule: Get library context (hostfxr_handle) failed for library: "
            "'/opt/morvath/quor/lib64/app.dll', result -1, lastErrorCode 4294967295");
}

TEST_F(LoadAssembly, WhatTheHostThrowsPasses) {
  world_.host.Throws(HostFunction::kInitialize, "the host's words");

  EXPECT_THROW(Load(), std::runtime_error);
}

TEST_F(LoadAssembly, TheApplicationRunsAndIsClosedInTheContextThatWasInitialised) {
  world_.host.Returns(HostFunction::kRun, 3).Returns(HostFunction::kClose, 9);
  const auto application = Load();

  EXPECT_EQ(application->Run(), 9);  // The closing's result, on purpose.

  EXPECT_EQ(world_.host.Story(), (Lines{"6.0.1 loaded", "6.0.1 initialize", "6.0.1 run_app", "6.0.1 close"}));
  EXPECT_EQ(world_.host.Call("run_app").fields.at("handle"), world_.host.Call("close").fields.at("handle"));
  EXPECT_NE(world_.host.Call("run_app").fields.at("handle"), "(nil)");
}

TEST_F(LoadAssembly, TheHostStaysLoadedForAsLongAsTheApplicationLives) {
  auto application = Load();
  loader_.reset();
  EXPECT_EQ(world_.host.Story(), (Lines{"6.0.1 loaded", "6.0.1 initialize"}));

  application.reset();

  EXPECT_EQ(world_.host.Story(), (Lines{"6.0.1 loaded", "6.0.1 initialize", "6.0.1 unloaded"}));
}

TEST(LoadAssemblyUnbound, AnEmptyHostPathIsProhibitedEvenIfAHostIsOpen) {
  LoaderWorld world;
  world.runtime.AddHost("6.0.1");
  const auto loader = std::make_shared<LoaderModule>(world.Parameters());
  ASSERT_TRUE(loader->LoadDotNet(world.Wide("6.0.1")));

  EXPECT_EQ(loader->LoadAssembly(u"app.dll", 0, nullptr), nullptr);

  EXPECT_EQ(world.log.Lines(), (Lines{world.CreatedLine()} + LoaderWorld::LoadedLines(world.File("6.0.1")) +
                                Lines{kLoadingLine,
                                      "ERROR\tLoadAssembly: Using hostFxrPath with relative path is "
                                      "prohibited: path: ''"}));
}

TEST(LoadAssemblyUnbound, ARelativeRootIsProhibitedAndCheckedBeforeTheHostPath) {
  const LoaderWorld world;
  const auto loader = std::make_shared<LoaderModule>(HostFxrModuleParameters{u"dotnet", u"6.0.", u"/product", {}});

  EXPECT_EQ(loader->LoadAssembly(u"app.dll", 0, nullptr), nullptr);

  EXPECT_EQ(world.log.Lines(), (Lines{LoaderWorld::CreatedLine("dotnet"), kLoadingLine,
                                      "ERROR\tLoadAssembly: Using dotnet_root with relative path is prohibited: path: "
                                      "'dotnet'"}));
}

TEST(LoadAssemblyUnbound, ALoaderThatNoSharedPointerOwnsThrows) {
  LoaderWorld world;
  world.runtime.AddHost("6.0.1");
  LoaderModule loader(world.Parameters());
  ASSERT_TRUE(loader.LoadDotNetWithHigerVersion());

  EXPECT_THROW(loader.LoadAssembly(u"app.dll", 0, nullptr), std::bad_weak_ptr);

  EXPECT_EQ(world.log.Lines().back(),
            "TRACE\tLoaderModule: Library context (hostfxr_handle) has been obtained successfully");
}

// Without a log, whose own conversion would meet the fault first.
TEST(LoadAssemblyUnlogged, AnAssemblyPathThatDoesNotConvertThrows) {
  tests::RuntimeTree runtime;
  runtime.AddHost("6.0.1");
  const auto loader =
      std::make_shared<LoaderModule>(HostFxrModuleParameters{runtime.Root().u16string(), u"6.0.", {}, {}});
  ASSERT_TRUE(loader->LoadDotNetWithHigerVersion());
  const tov::WideString name(5001, u'a');
  const tests::FailingAllocation fault(AssemblyPath(name).size() + 1);

  EXPECT_THROW(loader->LoadAssembly(name, 0, nullptr), tov::CheckResultFailedException);
}

}  // namespace
}  // namespace netloader
