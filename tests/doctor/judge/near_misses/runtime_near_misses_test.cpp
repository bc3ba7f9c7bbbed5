#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "doctor/examine/runtime_report.h"
#include "doctor/judge/near_misses/near_misses.h"
#include "doctor/judge/words/text.h"
#include "tests/doctor/installation.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/without_reading_everything.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;
using tests::RuntimeTree;

// Nothing is loaded: none of them needs it.
Warnings Misses(const fs::path& root) {
  return RuntimeNearMisses(ExamineRuntime(ToUtf16(root.string()), {}));
}

// "code place", in order, places relative to host/fxr; the warnings' words in the order of the codes.
std::string Names(const Warnings& warnings, const RuntimeTree& runtime) {
  std::string names;
  for (const Warning& warning : warnings) {
    std::string place = fs::path(warning.place).lexically_relative(runtime.FxrFolder());
    if (place.ends_with("/libhostfxr.so")) {
      place = fs::path(place).parent_path();
    }
    names.append(names.empty() ? "" : ", ").append(RowOf(kFindings, warning.finding).code).append(" " + place);
    EXPECT_NE(warning.text, "");
    EXPECT_NE(warning.cure, "");
    EXPECT_EQ((warning.text + warning.meaning + warning.cure).find('{'), std::string::npos) << warning.cure;
  }
  return names;
}

TEST(RuntimeNearMisses, AreNamedWithTheirPlace) {
  struct Row {
    const char* name;
    const char* misses;
    void (*lay)(RuntimeTree& runtime);
  };
  const Row rows[] = {
      {"a version folder is a link", "folder-is-link 6.0.2",
       [](RuntimeTree& tree) { tree.AddHost("6.0.1").AddLink("6.0.2", tree.FxrFolder() / "6.0.1"); }},
      {"the library is a link", "library-is-link 6.0.2",
       [](RuntimeTree& tree) { tree.AddHost("6.0.1").AddLink("6.0.2/libhostfxr.so", tree.HostFile("6.0.1")); }},
      {"octal", "octal-number 6.0.010", [](RuntimeTree& tree) { tree.AddHost("6.0.010"); }},
      {"octal without an octal digit", "octal-number 6.0.08", [](RuntimeTree& tree) { tree.AddHost("6.0.08"); }},
      {"octal zero", "octal-number 6.0.00", [](RuntimeTree& tree) { tree.AddHost("6.0.00"); }},
      {"hexadecimal", "hexadecimal-number 6.0.0x10", [](RuntimeTree& tree) { tree.AddHost("6.0.0x10"); }},
      {"hexadecimal in capitals", "hexadecimal-number 6.0.0X1", [](RuntimeTree& tree) { tree.AddHost("6.0.0X1"); }},
      {"no number", "no-number 6.0.new", [](RuntimeTree& tree) { tree.AddHost("6.0.new"); }},
      {"no tail at all", "no-number 6.0.", [](RuntimeTree& tree) { tree.AddHost("6.0."); }},
      {"against the order of the numbers", "octal-number 6.0.010, odd-order .",
       [](RuntimeTree& tree) { tree.AddHost("6.0.010").AddHost("6.0.9"); }},
      {"other machine", "other-machine 6.0.2",
       [](RuntimeTree& tree) { tree.AddHostOfBytes("6.0.2", tests::ArmLibrary()); }},
      {"cut short", "cut-short 6.0.2", [](RuntimeTree& tree) { tree.AddHostOfBytes("6.0.2", tests::CutLibrary()); }},
      {"a version's name that the dynamic loader would change", "string-token-in-path 6.0.2.$LIB",
       [](RuntimeTree& tree) { tree.AddHost("6.0.2.$LIB").AddHost("6.0.1"); }},
      {"a newer runtime", "other-runtime .", [](RuntimeTree& tree) { tree.AddHost("7.0.20"); }},
      {"an older runtime", "other-runtime .", [](RuntimeTree& tree) { tree.AddHost("3.1.32"); }},
      {"a runtime of nearly that name", "other-runtime .", [](RuntimeTree& tree) { tree.AddHost("6.1.0"); }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    RuntimeTree runtime;
    row.lay(runtime);

    EXPECT_EQ(Names(Misses(runtime.Root()), runtime), row.misses);
  }
}

TEST(RuntimeNearMisses, WhatIsMeantIsNone) {
  struct Row {
    const char* name;
    void (*lay)(RuntimeTree& runtime);
  };
  const Row rows[] = {
      {"one version", [](RuntimeTree& tree) { tree.AddHost("6.0.36"); }},
      {"several versions", [](RuntimeTree& tree) { tree.AddHost("6.0.9").AddHost("6.0.10").AddHost("6.0.100"); }},
      {"zero", [](RuntimeTree& tree) { tree.AddHost("6.0.0").AddHost("6.0.1"); }},
      {"a preview", [](RuntimeTree& tree) { tree.AddHost("6.0.0-preview.1").AddHost("6.0.1"); }},
      {"text in a library's place, which is reported already",
       [](RuntimeTree& tree) { tree.AddHostOfBytes("6.0.1", "text"); }},
      {"a dollar that means nothing", [](RuntimeTree& tree) { tree.AddHost("6.0.1$HOME"); }},
      {"another folder", [](RuntimeTree& tree) { tree.AddHost("backup").AddHost("6.0.1"); }},
      {"another version without a library", [](RuntimeTree& tree) { tree.AddFolder("7.0.1"); }},
      {"a link to a file", [](RuntimeTree& tree) { tree.AddHost("6.0.1").AddLink("x", tree.HostFile("6.0.1")); }},
      {"a link to nothing", [](RuntimeTree& tree) { tree.AddLink("x", "/nothing/there"); }},
      {"nothing", [](RuntimeTree&) {}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    RuntimeTree runtime;
    row.lay(runtime);

    EXPECT_EQ(Names(Misses(runtime.Root()), runtime), "");
  }
}

TEST(RuntimeNearMisses, OtherRuntimesAreNamedTogetherWhereNoneFits) {
  RuntimeTree runtime;
  runtime.AddHost("7.0.20").AddHost("8.0.11").AddHost("3.1.32");

  EXPECT_EQ(Misses(runtime.Root()).at(0).meaning,
            "There is 3.1.32, 7.0.20 and 8.0.11, but this launcher runs 6.0 only.");
  runtime.AddHost("6.0.1");
  EXPECT_TRUE(Misses(runtime.Root()).empty());
}

TEST(RuntimeNearMisses, TheirCuresForLinksMendThem) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.1").AddLink("6.0.2", runtime.FxrFolder() / "6.0.1");
  runtime.AddLink("6.0.3/libhostfxr.so", runtime.HostFile("6.0.1"));

  const Warnings warnings = Misses(runtime.Root());
  for (const Warning& warning : warnings) {
    EXPECT_EQ(std::system(warning.cure.c_str()), 0) << warning.cure;
  }

  EXPECT_EQ(warnings.size(), 2U);
  EXPECT_TRUE(Misses(runtime.Root()).empty());
}

TEST(RuntimeNearMisses, EqualNumbersAreNamedTogether) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.8").AddHost("6.0.010").AddHost("6.0.7");

  const Warnings warnings = Misses(runtime.Root());

  const auto found = std::ranges::find(warnings, Finding::kEqualNumbers, &Warning::finding);
  ASSERT_NE(found, warnings.end());
  EXPECT_NE(found->text.find("6.0.010"), std::string::npos);
  EXPECT_NE(found->text.find("6.0.8"), std::string::npos);
  EXPECT_EQ(found->text.find("6.0.7"), std::string::npos);
}

TEST(RuntimeNearMisses, ANumberIsReportedAsItIsRead) {
  struct Row {
    const char* version;
    const char* text;
  };
  const Row rows[] = {{"6.0.010", "'010' is read as octal: 8"},
                      {"6.0.0x10", "'0x10' is read as hexadecimal: 16"},
                      {"6.0.x", "'x' is not a number, and counts as 0"}};
  for (const Row& row : rows) {
    RuntimeTree runtime;
    runtime.AddHost(row.version);

    EXPECT_EQ(Misses(runtime.Root()).at(0).text, row.text);
  }
}

TEST(RuntimeNearMisses, WhatTheDynamicLoaderLacksIsNamedAndWhereItComesFrom) {
  struct Row {
    const char* words;
    const char* needed;
    const char* cure;
  };
  const Row rows[] = {{"libx.so.1: cannot open shared object file: No such file or directory", "libx.so.1",
                       "install the package of this system that has libx.so.1"},
                      {"/lib/libc.so.6: version `GLIBC_9.1' not found (required by /a.so)", "GLIBC_9.1",
                       "install a .NET runtime that is made for this system, or a newer system"}};
  for (const Row& row : rows) {
    const RuntimeTree runtime;
    RuntimeReport report = ExamineRuntime(ToUtf16(runtime.Root().string()), {});
    report.versions = {
        {.name = "6.0.1", .library = u"/a.so", .reason = VersionReason::kLoadFailed, .words = row.words}};

    const Warnings warnings = RuntimeNearMisses(report);

    const auto found = std::ranges::find(warnings, Finding::kNeededLibrary, &Warning::finding);
    ASSERT_NE(found, warnings.end());
    EXPECT_EQ(found->text, std::string("/a.so needs ") + row.needed + ", which this system does not have");
    EXPECT_EQ(found->meaning, std::string("The dynamic loader says: ") + row.words + ".");
    EXPECT_EQ(found->cure, row.cure);
  }
}

TEST(RuntimeNearMisses, TheFxrFolderMayBeALink) {
  RuntimeTree real;
  real.AddHost("6.0.1");
  RuntimeTree linked;
  fs::remove(linked.FxrFolder());
  fs::create_symlink(real.FxrFolder(), linked.FxrFolder());

  EXPECT_EQ(Names(Misses(linked.Root()), linked), "folder-is-link .");
  EXPECT_EQ(Names(Misses(real.Root()), real), "");
}

TEST(RuntimeNearMisses, AFolderThatTheUserCannotEnterIsNamed) {
  struct Row {
    const char* name;
    const char* closed;
    mode_t mode;
  };
  const Row rows[] = {{"a version", "6.0.2", 0}, {"a version, readable only", "6.0.2", 0444},
                      {"host/fxr", ".", 0},      {"host/fxr, readable only", ".", 0444},
                      {"host", "..", 0},         {"host, readable only", "..", 0644},
                      {"the root", "../..", 0}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    RuntimeTree runtime;
    runtime.AddHost("6.0.1").AddHost("6.0.2");
    const tests::WithoutReadingEverything user;
    const fs::path closed = (runtime.FxrFolder() / row.closed).lexically_normal();
    ::chmod(closed.c_str(), row.mode);

    const Warnings warnings = Misses(runtime.Root());

    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_EQ(std::system(warnings[0].cure.c_str()), 0) << warnings[0].cure;
    EXPECT_EQ(warnings[0].finding, Finding::kFolderNotEntered);
    EXPECT_EQ(fs::path(warnings[0].place + "/").lexically_normal(), fs::path(closed.string() + "/").lexically_normal());
    EXPECT_TRUE(Misses(runtime.Root()).empty());
  }
}

TEST(RuntimeNearMisses, ALibraryThatTheUserCannotReadIsNamed) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.1");
  const tests::WithoutReadingEverything user;
  fs::permissions(runtime.HostFile("6.0.1"), fs::perms::none);

  const Warnings warnings = Misses(runtime.Root());

  ASSERT_EQ(warnings.size(), 1U);
  EXPECT_EQ(warnings[0].finding, Finding::kFileNotRead);
  EXPECT_EQ(warnings[0].cure, "chmod u+r " + runtime.HostFile("6.0.1").string());
}

TEST(RuntimeNearMisses, ARootThatTheDynamicLoaderWouldChangeIsNamedOnce) {
  const tests::TempFolder folder;
  for (const char* version : {"6.0.1", "6.0.2"}) {
    tests::WriteFile(folder / "$ORIGIN/host/fxr" / version / "libhostfxr.so", tests::ReadFile(tests::HostLibrary()));
  }

  for (const char* name : {"$ORIGIN", "${PLATFORM}/nothing"}) {
    const Warnings warnings = Misses(folder / name);

    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_EQ(warnings[0].finding, Finding::kStringTokenInPath);
    EXPECT_EQ(warnings[0].place, folder / name);
  }
}

TEST(RuntimeNearMisses, ARelativeRootIsNamed) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.1");
  const fs::path relative = fs::relative(runtime.Root());

  const Warnings warnings = Misses(relative);

  ASSERT_EQ(warnings.size(), 1U);
  EXPECT_EQ(warnings[0].finding, Finding::kRelativeRoot);
  EXPECT_EQ(warnings[0].place, relative.string());
}

TEST(RuntimeNearMisses, ARootThatIsAHostFolderIsNamedWithTheRootThatWasMeant) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.1");
  for (const char* end : {"host/fxr", "host/fxr/", "host", "host//"}) {
    SCOPED_TRACE(end);
    const Warnings warnings = Misses(runtime.Root() / end);

    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_EQ(warnings[0].finding, Finding::kRootIsFxr);
    EXPECT_EQ(warnings[0].cure, "write " + runtime.Root().string() + " in its place");
  }
}

TEST(RuntimeNearMisses, ARootThatIsOnlyCalledHostIsNone) {
  const tests::TempFolder folder;
  fs::create_directories(folder / "host/host/fxr/6.0.1");

  EXPECT_TRUE(Misses(folder / "host").empty());
}

TEST(RuntimeNearMisses, ARootThatIsTheDotnetCommandIsNamedWithTheFolderItIsIn) {
  RuntimeTree runtime;
  tests::WriteFile(runtime.Root() / "dotnet", "");
  fs::create_directories(runtime.Root() / "bin");
  fs::create_symlink(runtime.Root() / "dotnet", runtime.Root() / "bin/dotnet");
  for (const char* file : {"dotnet", "bin/dotnet"}) {
    SCOPED_TRACE(file);
    const Warnings warnings = Misses(runtime.Root() / file);

    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_EQ(warnings[0].finding, Finding::kRootIsFile);
    EXPECT_EQ(warnings[0].cure, "write " + fs::canonical(runtime.Root()).string() + " in its place");
  }
}

TEST(RuntimeNearMisses, PlacesAndNamesArePrintable) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.\033[31m").AddHost("6.0.\n").AddHost("7.0.\r");

  for (const Warning& warning : Misses(runtime.Root())) {
    for (const std::string& text : {warning.place, warning.text, warning.cure}) {
      EXPECT_TRUE(std::ranges::none_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x20; })) << text;
    }
  }
}

TEST(RuntimeNearMisses, ANameThatIsNoTextHasNoNumber) {
  RuntimeTree alone;
  alone.AddHost("6.0.\xed\xa0\x80");
  RuntimeTree bytes;
  bytes.AddHost("6.0.\xff");

  EXPECT_EQ(Names(Misses(alone.Root()), alone), "");
  EXPECT_EQ(Names(Misses(bytes.Root()), bytes), "");
}

}  // namespace
}  // namespace doctor
