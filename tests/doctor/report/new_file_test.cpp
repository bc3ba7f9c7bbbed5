#include "doctor/report/new_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>

#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

const std::string kThere = "there is such a file already, and it is left alone";

TEST(NewFile, HoldsTheTextForItsOwnerOnly) {
  const tests::TempFolder folder;
  const std::string text(1'000'000, 'x');

  EXPECT_EQ(WriteNewFile(folder / "new", text), "");

  EXPECT_EQ(tests::ReadFile(folder / "new"), text);
  EXPECT_EQ(fs::status(folder / "new").permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST(NewFile, WhatIsThereIsLeftAlone) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "old", "old");
  fs::create_symlink("old", folder / "link");
  fs::create_symlink("nothing", folder / "dangling");
  ::mkfifo((folder / "pipe").c_str(), 0600);

  for (const char* name : {"old", "link", "dangling", "pipe", "."}) {
    EXPECT_EQ(WriteNewFile(folder / name, "new"), kThere) << name;
  }

  EXPECT_EQ(tests::ReadFile(folder / "old"), "old");
  EXPECT_FALSE(fs::exists(folder / "nothing"));
}

TEST(NewFile, SaysWhyItCannotBe) {
  EXPECT_EQ(WriteNewFile("/nothing/there", "new"), "No such file or directory");
  EXPECT_EQ(WriteNewFile("", "new"), "No such file or directory");
}

TEST(NewFile, OneThatThereIsNoRoomForIsNotWhole) {
  const tests::TempFolder folder;
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit little{4, before.rlim_max};
  const auto signal = std::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &little);
  const std::string failure = WriteNewFile(folder / "new", "longer than that");
  ::setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, signal);

  EXPECT_EQ(failure, "it is not whole: File too large");
  EXPECT_EQ(tests::ReadFile(folder / "new"), "long");
}

}  // namespace
}  // namespace doctor
