#include "netloader/netloaderhostfxr/src/library_module.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/virtual_slot.h"

namespace netloader {
namespace {

using Story = std::vector<std::string>;

// What happened, in order. The host's functions are plain functions, so this is theirs.
Story& Happened() {
  static Story story;
  return story;
}

class Loader : public LoaderModuleInterface {
 public:
  ~Loader() override { Happened().push_back("loader gone"); }
  std::shared_ptr<LibraryInterface> LoadAssembly(const tov::WideString&, int, const char**) override { return nullptr; }
};

int RunApp(void* handle) {
  Happened().push_back("run " + std::string(1, *static_cast<const char*>(handle)));
  return 3;
}

int Close(void* handle) {
  Happened().push_back("close " + std::string(1, *static_cast<const char*>(handle)));
  return 5;
}

class LibraryModuleTest : public testing::Test {
 protected:
  LibraryModuleTest() { Happened().clear(); }

  char context_ = 'c';
  std::shared_ptr<LoaderModuleInterface> loader_ = std::make_shared<Loader>();
};

TEST_F(LibraryModuleTest, RunReturnsTheResultOfTheClosingOnPurposeAndNotTheApplications) {
  LibraryModule application(loader_, &context_, &RunApp, &Close);

  EXPECT_EQ(application.Run(), 5);
  EXPECT_EQ(Happened(), (Story{"run c", "close c"}));
}

TEST_F(LibraryModuleTest, DestroyingItDoesNotCloseTheContext) {
  { const LibraryModule application(loader_, &context_, &RunApp, &Close); }

  EXPECT_EQ(Happened(), Story());
}

TEST_F(LibraryModuleTest, KeepsItsLoaderForAsLongAsItLives) {
  {
    const LibraryModule application(loader_, &context_, &RunApp, &Close);

    loader_.reset();

    EXPECT_EQ(Happened(), Story());
  }
  EXPECT_EQ(Happened(), (Story{"loader gone"}));
}

TEST(LibraryInterface, TheOperationsStandInTheTablesBehindTheDestructors) {
  EXPECT_EQ(tests::VirtualSlot(&LibraryInterface::Run), 2);
  EXPECT_EQ(tests::VirtualSlot(&LoaderModuleInterface::LoadAssembly), 2);
}

}  // namespace
}  // namespace netloader
