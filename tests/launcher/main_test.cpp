// Exit statuses, what is said on standard error, and the arguments.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "tests/support/launcher.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/settings_file.h"

namespace tests {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

constexpr const char* kAssembly = "/opt/morvath/quor/lib64/grellin_utils.dll";

// Everything that a successful launch takes.
struct ReadyToLaunch {
  RuntimeTree runtime;
  StandInHost host;
  SettingsFile settings = SettingsFile::ForRoot(runtime.Root());

  ReadyToLaunch() { runtime.AddHost("6.0.36"); }
};

// Without the line that a sanitizer writes when it, too, cannot read the name of the executable.
std::string WithoutSanitizerLine(const std::string& text) {
  return text.starts_with("==") ? text.substr(text.find('\n') + 1) : text;
}

std::string Lower(std::string text) {
  std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

TEST(Main, WithoutArgumentsOnlyTheAssemblyIsPassedOn) {
  const ReadyToLaunch world;

  const auto outcome = Launcher(world.host).Run();

  EXPECT_TRUE(EndedSilently(outcome, 0));
  EXPECT_EQ(world.host.Call("initialize").arguments, Texts{kAssembly});
  EXPECT_EQ(world.host.Call("initialize").fields.at("argc"), "1");
}

TEST(Main, WithoutEvenANameOnlyTheAssemblyIsPassedOn) {
  const ReadyToLaunch world;

  const auto outcome = Launcher(world.host).WithoutName().Run();

  EXPECT_TRUE(EndedSilently(outcome, 0));
  EXPECT_EQ(world.host.Call("initialize").arguments, Texts{kAssembly});
}

TEST(Main, OneArgumentIsPassedOnAsWell) {
  const ReadyToLaunch world;

  const auto outcome = Launcher(world.host).Arguments({"only"}).Run();

  EXPECT_TRUE(EndedSilently(outcome, 0));
  EXPECT_EQ(world.host.Call("initialize").arguments, (Texts{kAssembly, "only"}));
}

TEST(Main, ArgumentsFollowTheAssemblyAndTheOwnNameIsNeverPassedOn) {
  const ReadyToLaunch world;

  const auto outcome = Launcher(world.host).Name("some-name").Arguments({"a", "b"}).Run();

  EXPECT_TRUE(EndedSilently(outcome, 0));
  EXPECT_EQ(world.host.Call("initialize").arguments, (Texts{kAssembly, "a", "b"}));
}

TEST(Main, ArgumentsArriveByteForByte) {
  const ReadyToLaunch world;
  const Texts arguments{"",     " ",   "two words", "-h",    "--", "--roll-forward",
                        "\t\n", "%41", "=",         "\"'\\", "ж😀", "\xff\xfe"};

  const auto outcome = Launcher(world.host).Arguments(arguments).Run();

  Texts expected = arguments;
  expected.insert(expected.begin(), kAssembly);
  EXPECT_TRUE(EndedSilently(outcome, 0));
  EXPECT_EQ(world.host.Call("initialize").arguments, expected);
}

TEST(Main, WhatTheApplicationAndTheCloseReturnIsNeverTheExitStatus) {
  for (const int result : {1, 3, -1, 255, 2147483647}) {
    SCOPED_TRACE(result);
    ReadyToLaunch world;
    world.host.Returns(HostFunction::kRun, result).Returns(HostFunction::kClose, result);

    EXPECT_TRUE(EndedSilently(Launcher(world.host).Run(), 0));
    EXPECT_EQ(world.host.VersionThatRan(), "6.0.36");
  }
}

TEST(Main, AnApplicationThatExitsChoosesTheExitStatus) {
  ReadyToLaunch world;
  world.host.Exits(HostFunction::kRun, 7);

  EXPECT_TRUE(EndedSilently(Launcher(world.host).Run(), 7));
}

TEST(Main, ALaunchThatFailsWithoutAnExceptionEndsWith255AndSaysNothing) {
  ReadyToLaunch world;
  world.host.Returns(HostFunction::kInitialize, -1);

  EXPECT_TRUE(EndedSilently(Launcher(world.host).Run(), 255));
}

TEST(Main, AnExceptionIsReportedInOneLineAndAborts) {
  for (const HostFunction function : {HostFunction::kInitialize, HostFunction::kRun, HostFunction::kClose}) {
    SCOPED_TRACE(static_cast<int>(function));
    ReadyToLaunch world;
    world.host.Throws(function, "words of an exception");

    EXPECT_TRUE(AbortedSaying(Launcher(world.host).Run(), "Error occurred: words of an exception"));
  }
}

// A copy would be of the base class, and no longer say what has happened.
TEST(Main, AnExceptionEndsTheProcessAsTheOneThatItWas) {
  ReadyToLaunch world;
  world.host.Throws(HostFunction::kRun, "words of an exception");

  const auto outcome = Launcher(world.host).Run();

  EXPECT_NE(outcome.err.find("terminate called after throwing an instance of 'std::runtime_error'"), std::string::npos)
      << outcome;
}

TEST(Main, AnExceptionOfAClassOfTheHostsOwnIsReportedTooAndAborts) {
  for (const HostFunction function : {HostFunction::kInitialize, HostFunction::kRun, HostFunction::kClose}) {
    SCOPED_TRACE(static_cast<int>(function));
    ReadyToLaunch world;
    world.host.ThrowsOwnClass(function, "words of a class that only the host has");

    EXPECT_TRUE(AbortedSaying(Launcher(world.host).Run(), "Error occurred: words of a class that only the host has"));
  }
}

TEST(Main, AThrownNumberIsAnUnknownFailureAndAborts) {
  for (const HostFunction function : {HostFunction::kInitialize, HostFunction::kRun, HostFunction::kClose}) {
    SCOPED_TRACE(static_cast<int>(function));
    ReadyToLaunch world;
    world.host.Throws(function, "int");

    EXPECT_TRUE(AbortedSaying(Launcher(world.host).Run(), "Unknown failure occurred"));
  }
}

TEST(Main, AnExecutableInAFolderThatIsNotUtf8IsAResultCodeException) {
  const ReadyToLaunch world;
  const TempFolder folder;
  const fs::path copy = folder / "\xff/loader";
  fs::create_directory(copy.parent_path());
  fs::copy_file(LauncherFile(), copy);

  const auto outcome = Command(copy).Variables(world.host.Environment()).Run();

  EXPECT_TRUE(AbortedSaying(outcome,
                            "Error occurred: netloader/netloaderquorcommon/src/dotnet_settings(88): Expression failed. "
                            "Properties:\ntov.result=0x80000046\nCall stack:\n"));
  EXPECT_TRUE(world.host.Calls().empty());
}

TEST(Main, AnExecutableWhosePathIsTooLongToReadIsAResultCodeException) {
  const ReadyToLaunch world;
  const TempFolder folder("/var/opt/morvath");
  const std::string name(250, 'd');

  // Moved below folder after folder: no call takes a path that long.
  fs::create_directory(folder / "leaf");
  fs::copy_file(LauncherFile(), folder / "leaf/loader");
  for (int i = 0; i < 17; ++i) {
    fs::create_directory(folder / "wrap");
    fs::rename(folder / "leaf", folder / ("wrap/" + name));
    fs::rename(folder / "wrap", folder / "leaf");
  }
  std::string way = "leaf";
  for (int i = 0; i < 15; ++i) {
    way += "/" + name;
  }
  const auto outcome =
      Command("./" + name + "/" + name + "/loader").Folder(folder / way).Variables(world.host.Environment()).Run();

  EXPECT_EQ(Lower(WithoutSanitizerLine(outcome.err))
                .find("error occurred: netloader/netloaderquorcommon/src/dotnet_settings(88): expression "
                      "failed. properties:\ntov.result=0x8000005c\ncall stack:\n"),
            0U)
      << outcome;
  EXPECT_TRUE(world.host.Calls().empty());
}

TEST(Main, AnExecutableReachedThroughALinkWorks) {
  const ReadyToLaunch world;
  const TempFolder folder;
  fs::create_symlink(LauncherFile(), folder / "link");

  EXPECT_TRUE(EndedSilently(Command(folder / "link").Variables(world.host.Environment()).Run(), 0));
  EXPECT_EQ(world.host.VersionThatRan(), "6.0.36");
}

TEST(Main, NoLocaleOfTheMachineIsNeeded) {
  for (const std::string locale : {"", "C", "POSIX", "C.UTF-8", "no_such_locale", ".UTF8"}) {
    SCOPED_TRACE(locale);
    const ReadyToLaunch world;

    EXPECT_TRUE(EndedSilently(Launcher(world.host).Variable("LC_ALL", locale).Variable("LANG", locale).Run(), 0));
    EXPECT_EQ(world.host.VersionThatRan(), "6.0.36");
  }
}

// No machine has a locale of that name unless somebody made one: here it is a copy of one that there is.
TEST(Main, TheLocaleNamedUtf8IsTakenInAllCategoriesWhereThereIsOne) {
  const fs::path installed = "/usr/lib/locale/C.utf8";
  if (!fs::exists(installed)) {
    GTEST_SKIP() << "there is no " << installed;
  }
  const ReadyToLaunch world;
  const TempFolder locales;
  fs::copy(installed, locales / ".UTF8", fs::copy_options::recursive);

  const auto outcome = Launcher(world.host).Variable("LOCPATH", locales.Path()).Run();

  EXPECT_TRUE(EndedSilently(outcome, 0));
  EXPECT_EQ(world.host.Call("loaded").fields.at("locale"), ".UTF8");
}

TEST(Main, WithoutTheLocaleNamedUtf8ThePlainOneStays) {
  const ReadyToLaunch world;

  EXPECT_TRUE(EndedSilently(Launcher(world.host).Variable("LC_ALL", "C.UTF-8").Run(), 0));
  EXPECT_EQ(world.host.Call("loaded").fields.at("locale"), "C");
}

}  // namespace
}  // namespace tests
