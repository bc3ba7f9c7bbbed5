#include "doctor/examine/machine/listing.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "doctor/examine/machine/build_id.h"
#include "tests/support/stand_in_host.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

TEST(Listing, HasTheFilesOfAFolderByNameWithTheirRightsAndSizes) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "b", "12345");
  ::chmod((folder / "b").c_str(), 0640);
  fs::create_directory(folder / "a");
  ::chmod((folder / "a").c_str(), 0705);
  fs::create_symlink("b", folder / "c");
  ::mkfifo((folder / "d").c_str(), 0600);

  const Listing listing = ListFolder(folder.Path());

  ASSERT_EQ(listing.size(), 4U);
  EXPECT_EQ(listing[0].rights, "drwx---r-x");
  EXPECT_EQ(listing[1].path, (folder / "b").string());
  EXPECT_EQ(listing[1].rights, "-rw-r-----");
  EXPECT_EQ(listing[1].size, 5U);
  EXPECT_NE(listing[1].owner, "");
  EXPECT_NE(listing[1].group, "");
  EXPECT_EQ(listing[2].rights, "lrwxrwxrwx");
  EXPECT_EQ(listing[2].target, "b");
  EXPECT_EQ(listing[3].rights, "prw-------");
}

TEST(Listing, LibrariesByTheirNameHaveABuildIdAndNothingElseIsOpened) {
  const tests::TempFolder folder;
  const std::string library = tests::ReadFile(tests::HostLibrary());
  tests::WriteFile(folder / "library", library);
  tests::WriteFile(folder / "library.so", library);
  fs::create_symlink("library.so", folder / "link.so");

  const Listing listing = ListFolder(folder.Path());

  ASSERT_EQ(listing.size(), 3U);
  EXPECT_EQ(listing[0].build_id, "");
  EXPECT_EQ(listing[1].build_id, BuildId(tests::HostLibrary()));
  EXPECT_NE(listing[1].build_id, "");
  EXPECT_EQ(listing[2].build_id, "");
}

TEST(Listing, SaysWhyAFolderIsNotListed) {
  const Listing listing = ListFolder("/nothing/there");

  ASSERT_EQ(listing.size(), 1U);
  EXPECT_EQ(listing[0].path, "/nothing/there");
  EXPECT_EQ(listing[0].reason, "No such file or directory");
}

TEST(Listing, OfTheWayHasEveryFolderFromTheTopOn) {
  const tests::TempFolder folder;

  const Listing listing = ListTheWayTo((folder / "missing").string() + "/");

  ASSERT_GE(listing.size(), 3U);
  EXPECT_EQ(listing.front().path, "/");
  EXPECT_EQ(listing[listing.size() - 2].path, folder.Path().string());
  EXPECT_EQ(listing.back().reason, "No such file or directory");
}

}  // namespace
}  // namespace doctor
