#include "doctor/examine/runtime_report.h"

#include <gtest/gtest.h>

#include <csignal>
#include <system_error>

#include "doctor/judge/words/names.h"
#include "doctor/judge/words/text.h"
#include "doctor/judge/words/version_reasons.h"
#include "tests/doctor/installation.h"
#include "tests/support/elf_image.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

using tests::RuntimeTree;

// "6.0.2 chosen; 6.0.1 refused cut-short"
std::string Story(const RuntimeReport& report) {
  std::string story;
  for (const VersionReport& version : report.versions) {
    story.append(story.empty() ? "" : "; ").append(version.name + " ").append(RowOf(kStandings, version.standing).code);
    story.append(version.reason ? " " : "").append(ReasonCode(version));
  }
  return story;
}

// What loading finds, by version; good for those that are not named.
LibraryProber Finds(std::map<std::string, LibraryProbe> probes) {
  return [probes = std::move(probes)](const tov::WideString& path) {
    const std::string version = std::filesystem::path(ToUtf8(path)).parent_path().filename();
    const auto found = probes.find(version);
    return found != probes.end() ? found->second : LibraryProbe{{ChildEnd::kFinished}};
  };
}

LibraryProbe Ends(ChildEnd end, int code = 0, std::string message = {}) {
  return {{end, code, {}, std::move(message)}};
}

RuntimeReport Examine(const RuntimeTree& runtime, const LibraryProber& prober) {
  return ExamineRuntime(ToUtf16(runtime.Root().string()), prober);
}

TEST(RuntimeReport, CandidatesComeAsALaunchTriesThemAndTheOthersByName) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.9").AddHost("6.0.36").AddHost("7.0.1").AddFolder("backup").AddFolder("6.0.1");

  const RuntimeReport report = Examine(runtime, Finds({}));

  EXPECT_EQ(Story(report),
            "6.0.36 chosen; 6.0.9 not-loaded; 6.0.1 refused no-library; 7.0.1 refused wrong-prefix; "
            "backup refused wrong-prefix");
  EXPECT_EQ(report.Decisive(), &report.versions[0]);
  EXPECT_TRUE(report.versions[1].is_candidate);
  EXPECT_FALSE(report.versions[2].is_candidate);
  EXPECT_EQ(ToUtf8(report.versions[0].library), runtime.HostFile("6.0.36").string());
}

TEST(RuntimeReport, EveryRefusalHasItsReason) {
  struct Row {
    const char* reason;
    const char* detail;
    void (*lay)(RuntimeTree& runtime);
  };
  const Row rows[] = {
      {"no-library", "libhostfxr.so: ", [](RuntimeTree& tree) { tree.AddFolder("6.0.1"); }},
      {"library-is-link", "libhostfxr.so is a symbolic link",
       [](RuntimeTree& tree) { tree.AddLink("6.0.1/libhostfxr.so", tests::HostLibrary()); }},
      {"library-is-no-file", "libhostfxr.so is not a regular file",
       [](RuntimeTree& tree) { tree.AddFolder("6.0.1/libhostfxr.so"); }},
      {"not-elf", "not an ELF file", [](RuntimeTree& tree) { tree.AddHostOfBytes("6.0.1", std::string(999, 'x')); }},
      {"other-machine", "built for another machine or word size",
       [](RuntimeTree& tree) { tree.AddHostOfBytes("6.0.1", tests::ArmLibrary()); }},
      {"malformed", "program headers of an unknown size",
       [](RuntimeTree& tree) {
         const tests::ElfImage host(tests::ReadFile(tests::HostLibrary()));
         tree.AddHostOfBytes("6.0.1", host.With(offsetof(Elf64_Ehdr, e_phentsize), 2, 1).Bytes());
       }},
      {"cut-short", "cut short: needs at least 4096 bytes, has 120",
       [](RuntimeTree& tree) { tree.AddHostOfBytes("6.0.1", tests::CutLibrary()); }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.reason);
    RuntimeTree runtime;
    row.lay(runtime);

    const RuntimeReport report = Examine(runtime, Finds({}));

    EXPECT_EQ(report.versions.at(0).name, "6.0.1");
    EXPECT_EQ(report.versions.at(0).standing, Standing::kRefused);
    EXPECT_EQ(ReasonCode(report.versions.at(0)), row.reason);
    EXPECT_TRUE(Detail(report.versions.at(0)).starts_with(row.detail)) << Detail(report.versions.at(0));
    EXPECT_EQ(report.Decisive(), nullptr);
  }
}

TEST(RuntimeReport, ALibraryWhosePathMeansAnotherFileToTheDynamicLoaderIsNotLoaded) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.$LIB");

  for (const LibraryProber& prober : {LibraryProber(), Finds({})}) {
    const RuntimeReport report = Examine(runtime, prober);

    EXPECT_EQ(Story(report), "6.0.$LIB refused string-token");
    EXPECT_EQ(Detail(report.versions.at(0)), "its path contains $LIB, which the dynamic loader replaces");
  }
}

TEST(RuntimeReport, EveryEndOfLoadingIsAFinding) {
  struct Row {
    const char* story;
    const char* detail;
    LibraryProbe probe;
  };
  const Row rows[] = {
      {"6.0.2 refused load-failed; 6.0.1 chosen",
       "the loader's words",
       {{ChildEnd::kFinished}, "the loader's words", ""}},
      {"6.0.2 refused function-missing; 6.0.1 chosen",
       "lacks the function hostfxr_close",
       {{ChildEnd::kFinished}, "undefined symbol", "hostfxr_close"}},
      {"6.0.2 fatal threw; 6.0.1 not-loaded", "threw an exception while loading: its words",
       Ends(ChildEnd::kThrew, 0, "its words")},
      {"6.0.2 fatal threw; 6.0.1 not-loaded", "threw an exception while loading", Ends(ChildEnd::kThrewUnknown)},
      {"6.0.2 fatal exited; 6.0.1 not-loaded", "ended the process while loading, with status 17",
       Ends(ChildEnd::kExited, 17)},
      {"6.0.2 fatal crashed; 6.0.1 not-loaded", "crashed while loading: SIGBUS", Ends(ChildEnd::kCrashed, SIGBUS)},
      {"6.0.2 not-known timed-out; 6.0.1 not-loaded", "did not come back from loading within the time limit",
       Ends(ChildEnd::kTimedOut)},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.detail);
    RuntimeTree runtime;
    runtime.AddHost("6.0.2").AddHost("6.0.1");

    const RuntimeReport report = Examine(runtime, Finds({{"6.0.2", row.probe}}));

    EXPECT_EQ(Story(report), row.story);
    EXPECT_EQ(Detail(report.versions.at(0)), row.detail);
    EXPECT_EQ(report.versions.at(0).child.end, row.probe.child.end);
  }
}

TEST(RuntimeReport, NothingIsLoadedAfterTheOneThatDecides) {
  struct Row {
    const char* story;
    LibraryProbe newest;
  };
  const Row rows[] = {
      {"6.0.3 chosen; 6.0.2 not-loaded; 6.0.1 refused not-elf", {{ChildEnd::kFinished}}},
      {"6.0.3 fatal crashed; 6.0.2 not-loaded; 6.0.1 refused not-elf", Ends(ChildEnd::kCrashed, SIGSEGV)},
      {"6.0.3 not-known timed-out; 6.0.2 not-loaded; 6.0.1 refused not-elf", Ends(ChildEnd::kTimedOut)},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.story);
    RuntimeTree runtime;
    runtime.AddHost("6.0.3").AddHost("6.0.2").AddHostOfBytes("6.0.1", "text");
    int loaded = 0;

    const RuntimeReport report = Examine(runtime, [&](const tov::WideString&) {
      ++loaded;
      return row.newest;
    });

    EXPECT_EQ(Story(report), row.story);
    EXPECT_EQ(loaded, 1);
    EXPECT_EQ(report.decisive, 0U);
  }
}

TEST(RuntimeReport, WithoutAChildToLoadInThereIsNoReport) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.1");

  EXPECT_THROW(Examine(runtime, Finds({{"6.0.1", Ends(ChildEnd::kNotStarted, EAGAIN)}})), std::system_error);
}

TEST(RuntimeReport, WithoutAProberNothingIsLoadedAndTheFirstSoundOneDecides) {
  RuntimeTree runtime;
  runtime.AddHostOfBytes("6.0.3", "text").AddHost("6.0.2").AddHost("6.0.1");

  const RuntimeReport report = Examine(runtime, {});

  EXPECT_EQ(Story(report), "6.0.3 refused not-elf; 6.0.2 not-loaded; 6.0.1 not-loaded");
  EXPECT_EQ(report.decisive, 1U);
}

TEST(RuntimeReport, NothingIsLoadedFromARelativeRoot) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.1");
  const auto relative = std::filesystem::relative(runtime.Root());

  const RuntimeReport report = ExamineRuntime(ToUtf16(relative.string()), Finds({}));

  EXPECT_EQ(Story(report), "6.0.1 refused relative-path");
}

TEST(RuntimeReport, AFolderThatIsMetTwiceIsReportedOnce) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.1").AddFile("6.0.1/below/file").AddFile("6.0.1/file");

  const RuntimeReport report = Examine(runtime, Finds({}));

  EXPECT_EQ(Story(report), "6.0.1 chosen; below refused wrong-prefix");
}

TEST(RuntimeReport, NamesThatAreNotUtf8AreReportedTogether) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.1").AddFolder("caf\xe9").AddHost("6.0.\xff");

  const RuntimeReport report = Examine(runtime, Finds({}));

  EXPECT_EQ(Story(report), "6.0.1 chosen;  refused not-utf8");
}

TEST(RuntimeReport, TheFolderItselfMayBeWhatIsWrong) {
  RuntimeTree linked;
  RuntimeTree empty;
  std::filesystem::remove(linked.FxrFolder());
  std::filesystem::create_symlink(empty.FxrFolder(), linked.FxrFolder());
  RuntimeTree file;
  std::filesystem::remove(file.FxrFolder());
  tests::WriteFile(file.FxrFolder(), "text");
  RuntimeTree none;
  std::filesystem::remove(none.FxrFolder());

  EXPECT_EQ(Examine(linked, {}).discovery.state, netloader::FxrFolderState::kIsLink);
  EXPECT_EQ(Examine(file, {}).discovery.state, netloader::FxrFolderState::kNotAFolder);
  EXPECT_EQ(Examine(none, {}).discovery.state, netloader::FxrFolderState::kNoStatus);
  EXPECT_EQ(Examine(empty, {}).discovery.state, netloader::FxrFolderState::kWalked);
}

}  // namespace
}  // namespace doctor
