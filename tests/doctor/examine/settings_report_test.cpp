#include "doctor/examine/settings_report.h"

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

SettingsReport Report(std::string_view bytes) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "settings.ini", bytes);
  return ExamineSettings(folder / "settings.ini");
}

std::string UseOf(const SettingsEntry& entry) {
  switch (entry.use) {
    case LineUse::kUsed:
      return "used";
    case LineUse::kUnused:
      return "unused";
    case LineUse::kReplaced:
      return "replaced by " + std::to_string(entry.replaced_by);
    case LineUse::kSkipped:
      return "skipped";
    case LineUse::kMalformed:
      return "malformed";
  }
  return {};
}

// "1 used [key] [value]", line by line.
std::string Story(const SettingsReport& report) {
  std::string story;
  for (const SettingsEntry& entry : report.entries) {
    story += std::to_string(entry.line) + " " + UseOf(entry) + " [" + entry.key + "] [" + entry.value + "]\n";
  }
  return story;
}

TEST(SettingsReport, EveryLineIsToldWithItsUse) {
  struct Row {
    const char* name;
    std::string bytes, story;
  };
  const Row rows[] = {
      {"empty file", "", ""},
      {"the root", "DotnetRootFolder=/r\n", "1 used [DotnetRootFolder] [/r]\n"},
      {"no newline at the end", "DotnetRootFolder=/r", "1 used [DotnetRootFolder] [/r]\n"},
      {"the log folder", "LoaderLoggingDir=/l\n", "1 used [LoaderLoggingDir] [/l]\n"},
      {"another key", "Other=1\n", "1 unused [Other] [1]\n"},
      {"what sets nothing", "# words\n\n=x\n", "1 skipped [] [# words]\n2 skipped [] []\n3 skipped [] [=x]\n"},
      {"a line replaced", "DotnetRootFolder=/a\nX=1\nDotnetRootFolder=/b\n",
       "1 replaced by 3 [DotnetRootFolder] [/a]\n2 unused [X] [1]\n3 used [DotnetRootFolder] [/b]\n"},
      {"replaced twice", "X=1\nX=2\nX=3\n", "1 replaced by 2 [X] [1]\n2 replaced by 3 [X] [2]\n3 unused [X] [3]\n"},
      {"not UTF-8, and what follows is not read", "A=\xff\nDotnetRootFolder=/r\n", "1 malformed [A] [\xff]\n"},
      {"a key that is not UTF-8", "\xff=/r\n", "1 malformed [\xff] [/r]\n"},
      {"bytes that set nothing need not be UTF-8", "\xff\n", "1 skipped [] [\xff]\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const SettingsReport report = Report(row.bytes);

    EXPECT_TRUE(report.is_open);
    EXPECT_EQ(Story(report), row.story);
    EXPECT_EQ(report.failure.empty(), row.story.find("malformed") == std::string::npos);
  }
}

TEST(SettingsReport, RootAndLogFolderAreWhatALaunchTakes) {
  const SettingsReport report =
      Report(std::string("DotnetRootFolder=/a\nDotnetRootFolder=/b\0c\nLoaderLoggingDir= /l\r\n", 63));

  EXPECT_EQ(report.root, u"/b");
  EXPECT_EQ(report.log_folder, u" /l\r");
}

TEST(SettingsReport, AFailureIsInTheLaunchersWords) {
  EXPECT_EQ(Report("A=\xff\n").failure, "std::bad_cast");
}

TEST(SettingsReport, AFileThatCannotBeOpenedIsToldWithTheSystemsReason) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "file", "");
  struct Row {
    std::filesystem::path path;
    const char* reason;
  };
  const Row rows[] = {{folder / "none", "No such file or directory"}, {folder / "file/below", "Not a directory"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.path);
    const SettingsReport report = ExamineSettings(row.path);

    EXPECT_FALSE(report.is_open);
    EXPECT_EQ(report.reason, row.reason);
    EXPECT_NE(report.failure.find(row.path.string()), std::string::npos) << report.failure;
    EXPECT_TRUE(report.entries.empty());
    EXPECT_EQ(report.path, row.path);
  }
}

}  // namespace
}  // namespace doctor
