#include "doctor/examine/settings_report.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/scoped_environment.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

SettingsReport Report(std::string_view bytes, const tests::TempFolder& folder = {}) {
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

TEST(SettingsReport, EveryLineIsReportedWithItsUse) {
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

    EXPECT_TRUE(report.IsReadable());
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

TEST(SettingsReport, EndsWhereALaunchEnds) {
  EXPECT_EQ(Report("DotnetRootFolder=/r\n").end, SettingsEnd::kComplete);
  EXPECT_EQ(Report("Other=1\n").end, SettingsEnd::kNoRoot);
  EXPECT_EQ(Report("DotnetRootFolder=\n").end, SettingsEnd::kNoRoot);
  EXPECT_EQ(Report("DotnetRootFolder=/r\nA=\xff\n").end, SettingsEnd::kMalformed);
  EXPECT_EQ(ExamineSettings("/nothing/there").end, SettingsEnd::kUnreadable);
}

TEST(SettingsReport, AnotherRootIsALaunchsAndNotTheFiles) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "settings.ini", "DotnetRootFolder=/r\n");

  const SettingsReport with_root = ExamineSettings(folder / "settings.ini", u"/other");
  const SettingsReport without = ExamineSettings(folder / "settings.ini", u"");

  EXPECT_EQ(with_root.root, u"/r");
  EXPECT_EQ(with_root.end, SettingsEnd::kComplete);
  EXPECT_EQ(without.root, u"/r");
  EXPECT_EQ(without.end, SettingsEnd::kNoRoot);
}

TEST(SettingsReport, TheLogGoesToTheFoldersOfTheSettingsOrTheTemporaryOne) {
  const tests::TempFolder folder;
  tests::ScopedEnvironment environment;
  environment.Set("TMP", "/t").Set("TEMP", "/temp");

  EXPECT_EQ(Report("", folder).taken_log_folder, u"/t");
  EXPECT_EQ(Report("LoaderLoggingDir=\n", folder).taken_log_folder, u"/t");
  EXPECT_EQ(Report("A=\xff\n", folder).taken_log_folder, u"/t");
  EXPECT_EQ(Report("LoaderLoggingDir=/log\n", folder).taken_log_folder, u"/log");
  environment.Remove("TMP");
  EXPECT_EQ(Report("", folder).taken_log_folder, u"/temp");
  environment.Remove("TEMP");
  EXPECT_EQ(Report("", folder).taken_log_folder, u"/tmp");
}

TEST(SettingsReport, ALogFolderThatBeginsWithANulIsEmptyAsForALaunch) {
  const tests::TempFolder folder;
  tests::ScopedEnvironment environment;
  environment.Set("TMP", "/t");

  const SettingsReport report = Report(std::string("LoaderLoggingDir=\0x\n", 20), folder);

  EXPECT_TRUE(report.names_log_folder);
  EXPECT_EQ(report.log_folder, u"");
  EXPECT_EQ(report.taken_log_folder, u"");
}

TEST(SettingsReport, AFileThatCannotBeReadToItsEndIsReportedWithTheSystemsReason) {
  const SettingsReport report = ExamineSettings("/proc/self/mem");

  EXPECT_EQ(report.end, SettingsEnd::kUnreadable);
  EXPECT_EQ(report.reason, "Input/output error");
  EXPECT_EQ(report.failure, "Cannot read settings file by path: /proc/self/mem: iostream error");
}

TEST(SettingsReport, AFileThatCannotBeOpenedIsReportedWithTheSystemsReason) {
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

    EXPECT_FALSE(report.IsReadable());
    EXPECT_EQ(report.reason, row.reason);
    EXPECT_NE(report.failure.find(row.path.string()), std::string::npos) << report.failure;
    EXPECT_TRUE(report.entries.empty());
    EXPECT_EQ(report.path, row.path);
  }
}

TEST(SettingsReport, APipeIsNotWaitedFor) {
  const tests::TempFolder folder;
  const std::string pipe = folder / "settings.ini";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);

  const SettingsReport report = ExamineSettings(pipe);

  EXPECT_EQ(report.end, SettingsEnd::kNeverEnds);
  EXPECT_FALSE(report.IsReadable());
}

}  // namespace
}  // namespace doctor
