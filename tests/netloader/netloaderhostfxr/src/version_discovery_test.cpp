#include "netloader/netloaderhostfxr/src/version_discovery.h"

#include <dirent.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <ostream>
#include <string>
#include <vector>

#include "foundation/result_code.h"
#include "tests/netloader/netloaderhostfxr/src/interposed_calls.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/without_reading_everything.h"

namespace netloader {

bool operator==(const VersionFinding& a, const VersionFinding& b) {
  return a.name == b.name && a.verdict == b.verdict && a.result == b.result;
}
std::ostream& operator<<(std::ostream& stream, const VersionFinding& finding) {
  return stream << std::filesystem::path(finding.name) << ' ' << static_cast<int>(finding.verdict) << ' '
                << finding.result;
}

namespace {

namespace fs = std::filesystem;
using tests::RuntimeTree;
using tov::WideString;
using Versions = std::vector<WideString>;
using Findings = std::vector<VersionFinding>;

const int kNoSuchFile = tov::posix::ResultCodeFromSystemError(ENOENT);
const int kNotAFolder = tov::posix::ResultCodeFromSystemError(ENOTDIR);
const int kAccessDenied = tov::posix::ResultCodeFromSystemError(EACCES);

Discovery Discover(const RuntimeTree& runtime, const WideString& prefix = u"6.0.") {
  return DiscoverVersions(runtime.Root().u16string(), prefix, u"libhostfxr.so");
}

// The findings in the order of their names: that in which a folder lists its entries is the file system's.
Findings Sorted(Findings findings) {
  std::ranges::sort(findings, {}, &VersionFinding::name);
  return findings;
}

TEST(HostLibraryPath, TheFileNameOfAHostIsFixed) {
  EXPECT_EQ(kHostFxrFileName, u"libhostfxr.so");
}

TEST(FxrFolder, IsHostFxrUnderTheRootWithOneSlashBetween) {
  EXPECT_EQ(FxrFolder(u"/usr/share/dotnet"), u"/usr/share/dotnet/host/fxr");
  EXPECT_EQ(FxrFolder(u"/usr/share/dotnet/"), u"/usr/share/dotnet/host/fxr");
  EXPECT_EQ(FxrFolder(u"/"), u"/host/fxr");
  EXPECT_EQ(FxrFolder(u""), u"host/fxr");
}

TEST(HostLibraryPath, IsDirectlyUnderTheFxrFolder) {
  EXPECT_EQ(HostLibraryPath(u"/r/host/fxr", u"6.0.7", u"libhostfxr.so"), u"/r/host/fxr/6.0.7/libhostfxr.so");
}

TEST(Discovery, FindsEveryVersionWithARegularLibrary) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.5").AddHost("6.0.10");

  const Discovery found = Discover(runtime);

  EXPECT_EQ(found.state, FxrFolderState::kWalked);
  EXPECT_EQ(found.result, 0);
  EXPECT_EQ(found.fxr_folder, runtime.FxrFolder().u16string());
  EXPECT_EQ(Sorted(found.findings),
            (Findings{{u"6.0.10", VersionVerdict::kAccepted}, {u"6.0.5", VersionVerdict::kAccepted}}));
}

TEST(Discovery, TellsWhyAVersionIsNotAccepted) {
  RuntimeTree runtime;
  runtime.AddHost("7.0.0")
      .AddHost("6.1.0")
      .AddFolder("6.0.1")
      .AddLink("6.0.2/libhostfxr.so", tests::HostLibrary())
      .AddFolder("6.0.3/libhostfxr.so")
      .AddFile("6.0.4/LIBHOSTFXR.SO");

  const Discovery found = Discover(runtime);

  EXPECT_EQ(Sorted(found.findings), (Findings{
                                        {u"6.0.1", VersionVerdict::kNoLibrary, kNoSuchFile},
                                        {u"6.0.2", VersionVerdict::kLibraryIsLink},
                                        {u"6.0.3", VersionVerdict::kLibraryIsNoFile},
                                        {u"6.0.4", VersionVerdict::kNoLibrary, kNoSuchFile},
                                        {u"6.1.0", VersionVerdict::kWrongPrefix},
                                        {u"7.0.0", VersionVerdict::kWrongPrefix},
                                        {u"libhostfxr.so", VersionVerdict::kWrongPrefix},
                                    }));
  EXPECT_TRUE(found.Accepted().empty());
}

TEST(Discovery, ALinkToALibraryIsRefusedOnPurpose) {
  RuntimeTree runtime;
  runtime.AddHost("7.0.0").AddLink("6.0.1/libhostfxr.so", runtime.HostFile("7.0.0"));

  EXPECT_TRUE(Discover(runtime).Accepted().empty());
}

TEST(Discovery, ALinkToAVersionFolderIsRefusedOnPurpose) {
  RuntimeTree runtime;
  runtime.AddHost("7.0.0").AddLink("6.0.1", runtime.FxrFolder() / "7.0.0");

  EXPECT_EQ(Discover(runtime).findings, (Findings{{u"7.0.0", VersionVerdict::kWrongPrefix}}));
}

TEST(Discovery, FilesInTheFxrFolderAreNoVersions) {
  RuntimeTree runtime;
  runtime.AddFile("6.0.1", "text").AddFile("libhostfxr.so", "text");

  EXPECT_TRUE(Discover(runtime).findings.empty());
}

TEST(Discovery, ThePrefixIsComparedWithRegardToCase) {
  RuntimeTree runtime;
  runtime.AddHost("v6.0.1").AddHost("V6.0.2");

  EXPECT_EQ(Discover(runtime, u"v6").Accepted(), (Versions{u"v6.0.1"}));
}

TEST(Discovery, AnEmptyPrefixAcceptsEverything) {
  RuntimeTree runtime;
  runtime.AddHost("9").AddHost("backup");
  auto accepted = Discover(runtime, u"").Accepted();
  std::ranges::sort(accepted);

  EXPECT_EQ(accepted, (Versions{u"9", u"backup"}));
}

TEST(Discovery, AVersionNamedExactlyLikeThePrefixIsAccepted) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.");

  EXPECT_EQ(Discover(runtime).Accepted(), (Versions{u"6.0."}));
}

TEST(Discovery, ANestedVersionIsJudgedByTheLibraryDirectlyUnderTheFxrFolder) {
  RuntimeTree runtime;
  runtime.AddFolder("backup/6.0.7").AddHost("backup/6.0.8").AddHost("6.0.7");

  const Discovery found = Discover(runtime);

  EXPECT_EQ(found.Accepted(), (Versions{u"6.0.7", u"6.0.7"}));
  EXPECT_EQ(std::ranges::count(found.findings, WideString(u"6.0.8"), &VersionFinding::name), 1);
}

// Folders and files in turn, so that in whatever order they are listed a file comes before some folder and after
// another.
void MixFilesAndFolders(RuntimeTree& runtime, const std::string& version) {
  for (int i = 0; i < 20; ++i) {
    runtime.AddFile(version + "/file" + std::to_string(i)).AddFolder(version + "/folder" + std::to_string(i));
  }
}

TEST(Discovery, AVersionMayBeThereTwiceOnPurposeWhenTheWalkComesBackToItFromASubfolder) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.5");
  MixFilesAndFolders(runtime, "6.0.5");

  const auto accepted = Discover(runtime).Accepted();

  EXPECT_GE(accepted.size(), 2U);
  EXPECT_EQ(std::ranges::count(accepted, u"6.0.5"), static_cast<std::ptrdiff_t>(accepted.size()));
}

// The folders in which a depth-first walk stands, entry by entry, found by a reading of our own. A folder with an entry
// that is a folder is not stood in for that entry.
void WalkedFolders(const fs::path& folder, std::vector<fs::path>& walked) {
  DIR* const open = ::opendir(folder.c_str());
  while (const dirent* entry = ::readdir(open)) {
    const std::string name = entry->d_name;
    if (name != "." && name != ".." && fs::symlink_status(folder / name).type() == fs::file_type::directory) {
      WalkedFolders(folder / name, walked);
    } else {
      walked.push_back(folder);
    }
  }
  ::closedir(open);
}

TEST(Discovery, FindsTheFoldersInTheOrderInWhichTheWalkStandsInThem) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.5").AddHost("6.0.6").AddFolder("6.0.6/a/b/c").AddFolder("7.0.0/d").AddFile("readme");
  MixFilesAndFolders(runtime, "6.0.5");
  std::vector<fs::path> walked;
  WalkedFolders(runtime.FxrFolder(), walked);
  std::erase(walked, runtime.FxrFolder());  // Never looked at, nor does it part two looks at another.
  walked.erase(std::unique(walked.begin(), walked.end()), walked.end());

  Versions found;
  for (const VersionFinding& finding : Discover(runtime).findings) {
    found.push_back(finding.name);
  }

  Versions expected;
  std::ranges::transform(walked, std::back_inserter(expected), [](const auto& p) { return p.filename().u16string(); });
  EXPECT_EQ(found, expected);
}

TEST(Discovery, AMissingFxrFolderHasNoStatus) {
  const tests::TempFolder root;

  const Discovery found = DiscoverVersions(root.Path().u16string(), u"6.0.", u"libhostfxr.so");

  EXPECT_EQ(found.state, FxrFolderState::kNoStatus);
  EXPECT_EQ(found.result, kNoSuchFile);
  EXPECT_EQ(found.fxr_folder, (root / "host/fxr").u16string());
  EXPECT_TRUE(found.findings.empty());
}

TEST(Discovery, AFileAboveTheFxrFolderLeavesItWithoutAStatus) {
  const tests::TempFolder root;
  tests::WriteFile(root / "host", "text");

  const Discovery found = DiscoverVersions(root.Path().u16string(), u"6.0.", u"libhostfxr.so");

  EXPECT_EQ(found.state, FxrFolderState::kNoStatus);
  EXPECT_EQ(found.result, kNotAFolder);
}

TEST(Discovery, AnFxrFolderWhosePathDoesNotConvertHasNoStatus) {
  const WideString root = u"/" + WideString(5000, u'r');
  const tests::FailingAllocation fault(FxrFolder(root).size() + 1);

  const Discovery found = DiscoverVersions(root, u"6.0.", u"libhostfxr.so");

  EXPECT_EQ(found.state, FxrFolderState::kNoStatus);
  EXPECT_EQ(found.result, tov::result_code::kOutOfMemory);
}

TEST(Discovery, AFileInPlaceOfTheFxrFolderIsNoFolder) {
  const tests::TempFolder root;
  tests::WriteFile(root / "host/fxr", "text");

  EXPECT_EQ(DiscoverVersions(root.Path().u16string(), u"", u"libhostfxr.so").state, FxrFolderState::kNotAFolder);
}

TEST(Discovery, ALinkInPlaceOfTheFxrFolderIsRefusedOnPurposeEvenIfItPointsAtAFolder) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.1");
  const tests::TempFolder root;
  fs::create_directory(root / "host");
  fs::create_symlink(runtime.FxrFolder(), root / "host/fxr");

  const Discovery found = DiscoverVersions(root.Path().u16string(), u"6.0.", u"libhostfxr.so");

  EXPECT_EQ(found.state, FxrFolderState::kIsLink);
  EXPECT_TRUE(found.findings.empty());
}

TEST(Discovery, ALinkAboveTheFxrFolderIsFollowed) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.1");
  const tests::TempFolder root;
  fs::create_symlink(runtime.Root() / "host", root / "host");

  EXPECT_EQ(DiscoverVersions(root.Path().u16string(), u"6.0.", u"libhostfxr.so").Accepted(), (Versions{u"6.0.1"}));
}

TEST(Discovery, AnFxrFolderThatCannotBeOpenedIsUnreadable) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.1");
  fs::permissions(runtime.FxrFolder(), fs::perms::none);

  const Discovery found = [&] {
    const tests::WithoutReadingEverything ordinary;
    return Discover(runtime);
  }();

  fs::permissions(runtime.FxrFolder(), fs::perms::owner_all);
  EXPECT_EQ(found.state, FxrFolderState::kUnreadable);
  EXPECT_EQ(found.result, kAccessDenied);
  EXPECT_TRUE(found.findings.empty());
}

TEST(Discovery, AVersionFolderThatCannotBeOpenedIsPassedOver) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.1").AddHost("6.0.2");
  fs::permissions(runtime.FxrFolder() / "6.0.2", fs::perms::none);

  const Discovery found = [&] {
    const tests::WithoutReadingEverything ordinary;
    return Discover(runtime);
  }();

  fs::permissions(runtime.FxrFolder() / "6.0.2", fs::perms::owner_all);
  EXPECT_EQ(found.findings, (Findings{{u"6.0.1", VersionVerdict::kAccepted}}));
}

TEST(Discovery, AVersionFolderThatMayOnlyBeListedHasNoLibrary) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.1");
  fs::permissions(runtime.FxrFolder() / "6.0.1", fs::perms::owner_read);

  const Discovery found = [&] {
    const tests::WithoutReadingEverything ordinary;
    return Discover(runtime);
  }();

  fs::permissions(runtime.FxrFolder() / "6.0.1", fs::perms::owner_all);
  EXPECT_EQ(found.findings, (Findings{{u"6.0.1", VersionVerdict::kNoLibrary, kAccessDenied}}));
}

TEST(Discovery, AFolderWhoseNameIsNotUtf8IsNoFolderOnceAnotherWasMet) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.1");
  for (int i = 0; i < 20; ++i) {
    runtime.AddFile("6.0.1/file" + std::to_string(i)).AddFolder("6.0.1/\xff" + std::to_string(i));
  }

  const Findings found = Discover(runtime).findings;

  EXPECT_GE(std::ranges::count(found, VersionFinding{u"", VersionVerdict::kNotAFolder, kNoSuchFile}), 1);
  EXPECT_EQ(std::ranges::count(found, VersionVerdict::kAccepted, &VersionFinding::verdict) +
                std::ranges::count(found, VersionVerdict::kNotAFolder, &VersionFinding::verdict),
            static_cast<std::ptrdiff_t>(found.size()));
}

TEST(Discovery, AFolderWhoseNameIsNotUtf8IsNotEvenFoundBeforeAnother) {
  RuntimeTree runtime;
  runtime.AddFolder("\xff");

  EXPECT_TRUE(Discover(runtime).findings.empty());
}

TEST(Discovery, AnUnreadableStatusIsToldWithItsReason) {
  RuntimeTree runtime;
  const std::string name(255, 'v');
  fs::create_directories(runtime.FxrFolder() / name);

  const Discovery found = DiscoverVersions(runtime.Root().u16string(), u"v", WideString(256, u'l'));

  const int tooLong = tov::posix::ResultCodeFromSystemError(ENAMETOOLONG);
  EXPECT_EQ(found.findings, (Findings{{WideString(255, u'v'), VersionVerdict::kNoLibrary, tooLong}}));
}

}  // namespace
}  // namespace netloader
