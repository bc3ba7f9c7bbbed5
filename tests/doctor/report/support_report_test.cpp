#include "doctor/report/support_report.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "doctor/judge/words/text.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

TEST(SupportReport, HasEachPartWithItsTitle) {
  Surrounds surrounds;
  surrounds.way = {{"/", "drwxr-xr-x", "root", "root", 4096}};
  surrounds.folders = {
      {{"/a.so", "-rw-r--r--", "root", "adm", 7, "", "01ff"}, {"/b", "lrwxrwxrwx", "root", "root", 1, "/c\033"}},
      {{"/closed", "", "", "", 0, "", "", "Permission denied"}}};
  surrounds.variables = {"LD_PRELOAD"};

  const std::string text = SupportReport({}, {}, surrounds, "line\n");

  EXPECT_NE(text.find("\n==== The way to the folders ====\n"
                      "drwxr-xr-x root root 4096 /\n"
                      "\n"
                      "-rw-r--r-- root adm 7 /a.so build id 01ff\n"
                      "lrwxrwxrwx root root 1 /b -> /c\\x1b\n"
                      "\n"
                      "/closed: Permission denied\n"
                      "\n==== Variables that are set ====\n"
                      "LD_PRELOAD\n"
                      "\n==== The loader's log ====\n"
                      "line\n"
                      "\n==== The same for machines ====\n"
                      "{\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("\n5. Runtime start\n"), std::string::npos) << text;
}

TEST(SupportReport, ListsWhatALaunchLooksInto) {
  const tests::TempFolder root;
  tests::WriteFile(root / "shared/Some.App/6.0.1/a.dll", "x");
  Diagnosis diagnosis;
  diagnosis.settings.path = root / "common/settings.ini";
  diagnosis.runtime.emplace().root = ToUtf16(root.Path().string());
  diagnosis.application.frameworks.emplace_back().name = "Some.App";

  const Surrounds surrounds = LookAtSurrounds(diagnosis);

  const auto isListed = [&](const std::string& path) {
    return std::ranges::any_of(surrounds.folders, [&](const Listing& folder) {
      return std::ranges::find(folder, path, &ListedFile::path) != folder.end();
    });
  };
  EXPECT_TRUE(isListed(root / "shared"));
  EXPECT_TRUE(isListed(root / "shared/Some.App/6.0.1"));
  EXPECT_TRUE(isListed(root / "shared/Some.App/6.0.1/a.dll"));
  EXPECT_TRUE(isListed(root / "common"));
  EXPECT_EQ(std::ranges::count(surrounds.way, "/", &ListedFile::path), 1);
}

TEST(SupportReport, ListsNoFolderWhereNoneIsKnown) {
  const Surrounds surrounds = LookAtSurrounds({});

  EXPECT_TRUE(surrounds.folders.empty());
  EXPECT_TRUE(surrounds.way.empty());
}

// The names that the report has of these variables.
std::vector<std::string> NamesOutOf(std::vector<std::string> variables) {
  std::vector<char*> pointers;
  std::ranges::transform(variables, std::back_inserter(pointers), [](std::string& each) { return each.data(); });
  pointers.push_back(nullptr);
  char** const before = std::exchange(environ, pointers.data());
  auto names = LookAtSurrounds({}).variables;
  environ = before;
  return names;
}

TEST(SupportReport, HasTheNamesOfTheVariablesThatMatterInOrder) {
  EXPECT_EQ(NamesOutOf({"TZ=", "TMPDIR=", "TMP=", "TEMP=", "PATH=", "MALLOC_ARENA_MAX=1", "LD_PRELOAD=", "LC_ALL=C",
                        "LANGUAGE=", "LANG=", "HOME=/", "GLIBC_TUNABLES=", "DOTNET_gcServer=1", "COREHOST_TRACE=1",
                        "CORECLR_PROFILER=", "COMPlus_gcServer=1", "ASPNETCORE_URLS="}),
            (std::vector<std::string>{"ASPNETCORE_URLS", "COMPlus_gcServer", "CORECLR_PROFILER", "COREHOST_TRACE",
                                      "DOTNET_gcServer", "GLIBC_TUNABLES", "HOME", "LANG", "LANGUAGE", "LC_ALL",
                                      "LD_PRELOAD", "MALLOC_ARENA_MAX", "PATH", "TEMP", "TMP", "TMPDIR", "TZ"}));
}

TEST(SupportReport, HasNoNameOfOtherVariables) {
  EXPECT_TRUE(NamesOutOf({"PASSWORD=DOTNET_x", "MY_DOTNET_ROOT=", "TZDIR=", "home=/", "DOTNET", "=LANG"}).empty());
}

}  // namespace
}  // namespace doctor
