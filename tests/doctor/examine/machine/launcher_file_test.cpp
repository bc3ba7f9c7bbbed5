#include "doctor/examine/machine/launcher_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/scoped_environment.h"
#include "tests/support/stand_in_host.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

// A program that needs the C++ library, as the launcher does.
std::string SoundProgram() {
  return fs::read_symlink("/proc/self/exe").string();
}

std::string Program(const fs::path& file, const std::string& bytes, fs::perms mode) {
  tests::WriteFile(file, bytes);
  fs::permissions(file, mode);
  return file.string();
}

TEST(LauncherFile, AProgramWithItsLibrariesCanBegin) {
  const LauncherReport report = ExamineLauncher(SoundProgram(), true, {});

  EXPECT_TRUE(report.CanBegin()) << report.lacks;
}

TEST(LauncherFile, WhatIsNotAFileIsNotThere) {
  const tests::TempFolder folder;

  EXPECT_FALSE(ExamineLauncher(folder / "launcher", true, {}).is_there);
  EXPECT_FALSE(ExamineLauncher(folder.Path().string(), true, {}).is_there);
}

TEST(LauncherFile, AFileWithoutTheRightIsThereAndCannotBeExecuted) {
  const tests::TempFolder folder;

  const LauncherReport report = ExamineLauncher(Program(folder / "launcher", "", fs::perms(0644)), true, {});

  EXPECT_TRUE(report.is_there);
  EXPECT_FALSE(report.may_be_executed);
}

TEST(LauncherFile, ALibraryThatIsNoneIsToldInTheDynamicLoadersWords) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "libstdc++.so.6", "");
  tests::ScopedEnvironment environment;
  environment.Set("LD_LIBRARY_PATH", folder.Path().string());

  const LauncherReport report = ExamineLauncher(SoundProgram(), true, {});

  EXPECT_FALSE(report.CanBegin());
  EXPECT_NE(report.lacks.find("libstdc++.so.6: file too short"), std::string::npos) << report.lacks;
}

TEST(LauncherFile, AVersionThatALibraryDoesNotHaveIsNamed) {
  const tests::TempFolder folder;
  const std::string version = "GLIBC_2.";
  std::string program = tests::ReadFile(tests::HostLibrary());  // To the dynamic loader, a library is one as well.
  ASSERT_NE(program.find(version), std::string::npos);
  program.replace(program.find(version), version.size(), "GLIBC_9.");
  const std::string file = Program(folder / "launcher", program, fs::perms(0755));

  const LauncherReport report = ExamineLauncher(file, true, {});

  EXPECT_TRUE(report.lacks.starts_with(file + ": ")) << report.lacks;
  EXPECT_NE(report.lacks.find(": version `GLIBC_9."), std::string::npos) << report.lacks;
  EXPECT_TRUE(report.lacks.ends_with(" not found (required by " + file + ")")) << report.lacks;
}

TEST(LauncherFile, AProgramThatIsCutShortEndsTheDynamicLoader) {
  const tests::TempFolder folder;
  fs::copy_file(SoundProgram(), folder / "launcher");
  fs::resize_file(folder / "launcher", 8192);

  EXPECT_EQ(ExamineLauncher(folder / "launcher", true, {}).lacks, "loading it ends with SIGBUS");
}

TEST(LauncherFile, AFileThatIsNoProgramCannotBeginAndIsNotStarted) {
  const tests::TempFolder folder;
  const std::string script = "#!/bin/sh\ntouch '" + (folder / "trace").string() + "'\n" + std::string(4096, '#');

  const LauncherReport report = ExamineLauncher(Program(folder / "launcher", script, fs::perms(0755)), true, {});

  EXPECT_FALSE(report.CanBegin());
  EXPECT_FALSE(fs::exists(folder / "trace"));
}

TEST(LauncherFile, WithoutLoadingTheLibrariesAreNotAskedFor) {
  const tests::TempFolder folder;

  EXPECT_TRUE(ExamineLauncher(Program(folder / "launcher", "x", fs::perms(0755)), false, {}).CanBegin());
}

// The tests stand in another folder than the launcher.
TEST(LauncherFile, IsLookedForInTheFolderOfThisProgram) {
  EXPECT_EQ(LauncherBeside(), "");
}

}  // namespace
}  // namespace doctor
