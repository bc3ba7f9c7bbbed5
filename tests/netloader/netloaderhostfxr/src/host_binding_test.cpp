#include "netloader/netloaderhostfxr/src/host_binding.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/netloader/netloaderhostfxr/src/interposed_calls.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/stand_in_host.h"

namespace netloader {
namespace {

using tests::HostVariant;
using Story = std::vector<std::string>;

// Every step, and what the host had recorded by then.
class Steps final : public BindingListener {
 public:
  explicit Steps(const tests::StandInHost& host) : host_(host) {}

  void LibraryNotOpened(const std::string& error) override { Add("not opened: " + error); }
  void LibraryOpened() override { Add("opened"); }
  void FunctionNotFound(const char* name, const std::string& error) override {
    Add(std::string("not found: ") + name + (error.empty() ? "" : ", with words"));
  }
  void FunctionIsNull(const char* name) override { Add(std::string("null: ") + name); }
  void HostBound() override { Add("bound"); }

  const Story& Taken() const { return taken_; }

 private:
  void Add(const std::string& step) {
    const Story story = host_.Story();
    taken_.push_back(step + " (" + (story.empty() ? "" : story.back()) + ")");
  }

  const tests::StandInHost& host_;
  Story taken_;
};

// A host in a runtime, and the steps of binding it.
struct BindingWorld {
  tests::RuntimeTree runtime;
  tests::StandInHost host;
  tests::ScopedEnvironment environment{host.Environment()};
  Steps steps{host};

  HostBinding Bind(HostVariant variant) {
    runtime.AddHost("6.0.1", variant);
    return BindHost(runtime.HostFile("6.0.1").u16string(), steps);
  }
};

TEST(BindHost, LooksTheThreeFunctionsUpInThisOrder) {
  const Story names(kHostFunctions.begin(), kHostFunctions.end());

  EXPECT_EQ(names, (Story{"hostfxr_initialize_for_dotnet_command_line", "hostfxr_run_app", "hostfxr_close"}));
}

TEST(BindHost, AWholeHostIsOpenedAndBound) {
  BindingWorld world;

  const HostBinding bound = world.Bind(HostVariant::kWhole);

  EXPECT_EQ(world.steps.Taken(), (Story{"opened (6.0.1 loaded)", "bound (6.0.1 loaded)"}));
  EXPECT_TRUE(bound.is_opened);
  EXPECT_NE(bound.library.get(), nullptr);
  EXPECT_TRUE(bound.functions.AreComplete());
}

TEST(BindHost, AFileThatDoesNotOpenIsReportedWithItsReason) {
  BindingWorld world;

  const HostBinding bound = world.Bind(HostVariant::kUnresolved);

  ASSERT_EQ(world.steps.Taken().size(), 1U);
  EXPECT_NE(world.steps.Taken().front().find("undefined symbol: stand_in_function_that_no_library_has"),
            std::string::npos);
  EXPECT_FALSE(bound.is_opened);
  EXPECT_EQ(bound.library.get(), nullptr);
}

TEST(BindHost, TheLibraryIsStillOpenWhenAMissingFunctionIsReportedAndClosedThen) {
  BindingWorld world;

  const HostBinding bound = world.Bind(HostVariant::kLacksRun);

  EXPECT_EQ(world.steps.Taken(),
            (Story{"opened (6.0.1 loaded)", "not found: hostfxr_run_app, with words (6.0.1 loaded)"}));
  EXPECT_TRUE(bound.is_opened);
  EXPECT_EQ(bound.library.get(), nullptr);
  EXPECT_NE(bound.functions.initialize, nullptr);
  EXPECT_EQ(bound.functions.close, nullptr);
  EXPECT_EQ(world.host.Story(), (Story{"6.0.1 loaded", "6.0.1 unloaded"}));
}

TEST(BindHost, ANullFunctionWithAnEmptyReasonLeavesTheLibraryOpenOnPurpose) {
  struct Row {
    HostVariant variant;
    const char* step;
  };
  for (const Row& row :
       {Row{HostVariant::kLacksInitialize, "null: hostfxr_initialize_for_dotnet_command_line"},
        Row{HostVariant::kLacksRun, "null: hostfxr_run_app"}, Row{HostVariant::kLacksClose, "null: hostfxr_close"}}) {
    SCOPED_TRACE(row.step);
    BindingWorld world;
    const tests::ScriptedLoaderErrors errors({""});

    const HostBinding bound = world.Bind(row.variant);

    EXPECT_EQ(world.steps.Taken(), (Story{"opened (6.0.1 loaded)", std::string(row.step) + " (6.0.1 loaded)"}));
    EXPECT_NE(bound.library.get(), nullptr);
    EXPECT_FALSE(bound.functions.AreComplete());
  }
}

}  // namespace
}  // namespace netloader
