#include "doctor/examine/other_roots.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "doctor/judge/words/names.h"
#include "tests/doctor/installation.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;
using tests::RuntimeTree;

// "folder by name", one after the other.
std::string Names(const std::vector<RootPlace>& places) {
  std::string names;
  for (const RootPlace& place : places) {
    names.append(names.empty() ? "" : ", ").append(place.folder);
    names.append(place.named_by.empty() ? "" : " by " + place.named_by);
  }
  return names;
}

TEST(RootPlaces, AreThoseThatAreNamedThenTheUsualOnes) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "location", "/by/file\nmore\n");
  tests::WriteFile(folder / "bin/dotnet", "");
  tests::ScopedEnvironment environment;
  environment.Set("SOME_ROOT", "/by/variable")
      .Set("HOME", "/home/us")
      .Set("PATH", "/nothing:" + (folder / "bin").string());

  const auto places = RootPlaces({{"SOME_ROOT"}, {folder / "location"}, {"/usual"}, ".dotnet", "dotnet"});

  EXPECT_EQ(Names(places), "/by/variable by SOME_ROOT, /by/file by " + (folder / "location").string() +
                               ", /usual, /home/us/.dotnet, " + fs::canonical(folder / "bin").string() + " by dotnet");
}

TEST(RootPlaces, LackWhatIsNotNamed) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "empty", "");
  tests::WriteFile(folder / "relative", "opt/dotnet\n");
  tests::ScopedEnvironment environment;
  environment.Remove("SOME_ROOT").Remove("HOME").Set("PATH", "bin::/nothing");

  EXPECT_EQ(Names(RootPlaces({{"SOME_ROOT"},
                              {folder / "none", folder / "empty", folder / "relative", folder.Path()},
                              {},
                              ".dotnet",
                              "dotnet"})),
            "");
}

TEST(RootPlaces, TheCommandIsFollowedToWhereItIs) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "real/dotnet", "");
  fs::create_directory(folder / "bin");
  fs::create_symlink(folder / "real/dotnet", folder / "bin/dotnet");
  tests::ScopedEnvironment environment;
  environment.Set("PATH", folder / "bin");

  EXPECT_EQ(Names(RootPlaces({{}, {}, {}, "", "dotnet"})), fs::canonical(folder / "real").string() + " by dotnet");
}

// What the host itself looks at, the folders of Microsoft's, Debian's, Fedora's and snap's packages, and of the script.
TEST(RootPlaces, TheUsualOnesAreWhereInstallersPutThem) {
  using Texts = std::vector<std::string>;
  const InstallPlaces usual;

  EXPECT_EQ(usual.variables, (Texts{"DOTNET_ROOT_X64", "DOTNET_ROOT"}));
  EXPECT_EQ(usual.files, (Texts{"/etc/dotnet/install_location_x64", "/etc/dotnet/install_location"}));
  EXPECT_EQ(usual.folders,
            (Texts{"/usr/share/dotnet", "/usr/lib/dotnet", "/usr/lib64/dotnet", "/opt/dotnet",
                   "/snap/dotnet-runtime-60/current", "/snap/dotnet-sdk/current",
                   "/var/lib/snapd/snap/dotnet-runtime-60/current", "/var/lib/snapd/snap/dotnet-sdk/current"}));
  EXPECT_EQ(usual.folder_at_home, ".dotnet");
  EXPECT_EQ(usual.command, "dotnet");
}

std::string_view StateOf(const fs::path& root, const RootProber& prober) {
  const auto roots = ExamineOtherRoots({{root}}, "", prober);
  return RowOf(kRootStates, roots.at(0).state).code;
}

TEST(OtherRoots, HaveAState) {
  const RootProber accepts = [](const RuntimeReport&) { return true; };
  const RootProber refuses = [](const RuntimeReport&) { return false; };
  RuntimeTree runtime;

  EXPECT_EQ(StateOf(runtime.Root() / "none", accepts), "nothing");
  EXPECT_EQ(StateOf(runtime.AddHost("8.0.1").Root(), accepts), "no-version");
  EXPECT_EQ(StateOf(runtime.AddHostOfBytes("6.0.1", tests::CutLibrary()).Root(), accepts), "no-version");
  EXPECT_EQ(StateOf(runtime.AddHost("6.0.2").Root(), {}), "not-loaded");
  EXPECT_EQ(StateOf(runtime.Root(), refuses), "refused");
  EXPECT_EQ(StateOf(runtime.Root(), accepts), "serves");
}

TEST(OtherRoots, AreLookedAtOnceEach) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.1");
  const tests::TempFolder folder;
  fs::create_directory_symlink(runtime.Root(), folder / "link");
  const std::string root = runtime.Root();

  const auto roots = ExamineOtherRoots({{folder / "link"}, {root}, {root + "/"}, {"/no"}, {"/no/"}}, "", {});
  const auto unknown = ExamineOtherRoots({{folder / "link"}, {root}}, root + "//", {});

  ASSERT_EQ(roots.size(), 2U);
  EXPECT_EQ(roots[0].place.folder, folder / "link");
  EXPECT_EQ(roots[0].version, "6.0.1");
  EXPECT_TRUE(unknown.empty());
}

TEST(OtherRoots, AreNotLookedForBehindOneThatIsMeantAndUsable) {
  RuntimeTree runtime;
  runtime.AddHost("6.0.1");
  const std::string root = runtime.Root();
  const auto found = [&](bool isMeant, bool serves) {
    return ExamineOtherRoots({{"/no", "", true}, {root, "", isMeant}, {"/other"}}, "",
                             [=](const RuntimeReport&) { return serves; })
        .size();
  };

  EXPECT_EQ(found(true, true), 2U);
  EXPECT_EQ(found(true, false), 3U);
  EXPECT_EQ(found(false, true), 3U);
}

TEST(OtherRoots, AFrameworkIsThereWhenAFolderOfAFittingVersionIsOneToTheHost) {
  const tests::TempFolder root;
  const fs::path frameworks = root / "shared/Microsoft.NETCore.App";

  EXPECT_FALSE(HasFramework(root.Path()));
  tests::WriteFile(frameworks / "6.0.1/other.dll", "");
  tests::WriteFile(frameworks / "6.0.2", "no folder");
  tests::WriteFile(frameworks / "8.0.0/Microsoft.NETCore.App.deps.json", "");
  EXPECT_FALSE(HasFramework(root.Path()));
  tests::WriteFile(frameworks / "6.0.1/Microsoft.NETCore.App.deps.json", "");
  EXPECT_TRUE(HasFramework(root.Path()));
}

}  // namespace
}  // namespace doctor
