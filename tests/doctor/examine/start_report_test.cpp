#include "doctor/examine/start_report.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/assembly_image.h"
#include "tests/support/managed_image.h"
#include "tests/support/stand_in_host.h"
#include "tests/support/temp_folder.h"

namespace doctor {

void PrintTo(const BrokenFile& file, std::ostream* out) {
  *out << file.path << ": " << file.detail << (file.need == Need::kMain ? ", for Main" : "")
       << (file.may_be_read ? "" : ", closed") << (file.is_cut_library ? ", cut" : "")
       << (file.is_application ? ", of the application" : "") << (file.is_named ? ", named" : "")
       << (file.is_listed ? "" : ", not listed");
}

namespace {

namespace fs = std::filesystem;

using Broken = std::vector<BrokenFile>;

// A framework and an application whose files are all sound; a test spoils one of them.
struct BrokenFramework {
  static constexpr const char* kApplication = "product/app.dll";
  static constexpr const char* kBeside = "product/part.dll";

  BrokenFramework() {
    fs::create_directory(folder / "product");
    for (const char* assembly :
         {kApplication, kBeside, "System.Private.CoreLib.dll", "System.Runtime.dll", "System.Linq.dll"}) {
      tests::WriteFile(folder / assembly, tests::AssemblyImage().bytes);
      assemblies.append(folder / assembly).append(":");
    }
    for (const char* library : {"libcoreclr.so", "libclrjit.so", "libSystem.Native.so", "libclrgc.so"}) {
      fs::copy_file(tests::HostLibrary(), folder / library);
    }
  }

  StartReport Examined(bool isStarted = false) const {
    return ExamineStart(folder / kApplication, assemblies, [isStarted] {
      return StartProbe{{ChildEnd::kFinished}, isStarted};
    });
  }

  tests::TempFolder folder;
  std::string assemblies;
};

TEST(StartReport, OfSoundFilesNoneIsBroken) {
  const StartReport report = BrokenFramework().Examined(true);

  EXPECT_TRUE(report.probe.HasStarted());
  EXPECT_TRUE(report.broken.empty());
  EXPECT_EQ(report.Decisive(), nullptr);
}

TEST(StartReport, EveryFileIsReadAndKnownForWhatNeedsIt) {
  struct Row {
    const char* name;
    Need need;
  };
  const Row rows[] = {
      {"System.Private.CoreLib.dll", Need::kStart},
      {"libcoreclr.so", Need::kStart},
      {"libclrjit.so", Need::kStart},
      {"libSystem.Native.so", Need::kStart},
      {"product/app.dll", Need::kMain},
      {"product/part.dll", Need::kLater},
      {"System.Runtime.dll", Need::kMain},
      {"System.Linq.dll", Need::kLater},
      {"libclrgc.so", Need::kLater},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const BrokenFramework world;
    tests::WriteFile(world.folder / row.name, "hello");

    const StartReport report = world.Examined();

    ASSERT_EQ(report.broken.size(), 1U);
    EXPECT_EQ(report.broken[0].path, (world.folder / row.name).string());
    EXPECT_EQ(report.broken[0].need, row.need);
    EXPECT_EQ(report.Decisive() != nullptr, row.need != Need::kLater);
    EXPECT_EQ(report.broken[0].is_application, std::string(row.name).starts_with("product/"));
  }
}

TEST(StartReport, AMissingFileIsBroken) {
  for (const char* name : {"product/app.dll", "System.Linq.dll", "libclrjit.so"}) {
    const BrokenFramework world;
    fs::remove(world.folder / name);

    const StartReport report = world.Examined();

    ASSERT_EQ(report.broken.size(), 1U) << name;
    EXPECT_EQ(report.broken[0].detail, "missing");
    EXPECT_TRUE(report.broken[0].may_be_read);
  }
}

TEST(StartReport, WhatIsNeededFirstComesFirst) {
  const BrokenFramework world;
  for (const char* name : {"product/app.dll", "System.Linq.dll", "libclrjit.so"}) {
    tests::WriteFile(world.folder / name, "hello");
  }

  const StartReport report = world.Examined();

  ASSERT_EQ(report.broken.size(), 3U);
  EXPECT_TRUE(report.Decisive()->path.ends_with("libclrjit.so"));
  EXPECT_TRUE(report.broken[1].path.ends_with("app.dll"));
}

TEST(StartReport, ARuntimeThatHasStartedLackedNothingThatStartingTakes) {
  const BrokenFramework world;
  tests::WriteFile(world.folder / "libclrjit.so", "hello");

  EXPECT_EQ(world.Examined(true).Decisive(), nullptr);
  EXPECT_NE(world.Examined(false).Decisive(), nullptr);
}

TEST(StartReport, WhereTheHostDoesNotSayWhichAssembliesThereAreNoFileIsLookedAt) {
  const StartReport report = ExamineStart("/no/such/app.dll", "", [] { return StartProbe{}; });

  EXPECT_TRUE(report.broken.empty());
}

TEST(StartReport, AnAssemblyThatIsNeededAtOnceMustHaveTheNameThatItIsLookedForBy) {
  const BrokenFramework world;
  tests::WriteFile(world.folder / "System.Runtime.dll", tests::ManagedImage().Bytes());
  tests::WriteFile(world.folder / "System.Linq.dll", tests::ManagedImage().Bytes());

  const StartReport report = world.Examined();

  const BrokenFile other{.path = world.folder / "System.Runtime.dll", .need = Need::kMain, .detail = "it is app"};
  EXPECT_EQ(report.broken, Broken{other}) << "one that is needed later is not read so far";
}

TEST(StartReport, AnApplicationWithoutAFirstFunctionIsBroken) {
  const BrokenFramework world;
  tests::ManagedImage library;
  library.entry_point = 0;
  tests::WriteFile(world.folder / world.kApplication, library.Bytes());

  const StartReport report = world.Examined();

  const BrokenFile application{.path = world.folder / world.kApplication,
                               .need = Need::kMain,
                               .is_application = true,
                               .detail = "it has no first function"};
  EXPECT_EQ(report.broken, Broken{application});
}

TEST(StartReport, WhatTheApplicationsCodeNamesIsKnown) {
  BrokenFramework world;
  tests::WriteFile(world.folder / world.kApplication, tests::ManagedImage().Bytes());
  for (const char* name : {"Other.dll", "Needed.dll", "System.Linq.dll"}) {
    tests::WriteFile(world.folder / name, "hello");
    world.assemblies.append(world.folder / name).append(":");
  }

  const StartReport report = world.Examined();

  ASSERT_EQ(report.broken.size(), 4U) << "one is listed twice";
  EXPECT_TRUE(report.broken[0].path.ends_with("Needed.dll"));
  EXPECT_EQ(report.broken[0].need, Need::kMain) << "the first function names it";
  EXPECT_TRUE(report.broken[0].is_named);
  EXPECT_EQ(report.Named(), &report.broken[0]);
  EXPECT_FALSE(report.broken[1].is_named) << "System.Linq.dll";
  EXPECT_TRUE(report.broken[2].path.ends_with("Other.dll"));
  EXPECT_EQ(report.broken[2].need, Need::kLater) << "only other code names it";
  EXPECT_TRUE(report.broken[2].is_named);
}

// Its first function takes the assembly "Needed".
TEST(StartReport, WhatMainNeedsAndTheRuntimeIsNotToldOfIsMissing) {
  BrokenFramework world;
  tests::WriteFile(world.folder / world.kApplication, tests::ManagedImage().Bytes());

  const StartReport report = world.Examined(true);

  const BrokenFile missing{.path = world.folder / "product/Needed.dll",
                           .need = Need::kMain,
                           .is_application = true,
                           .detail = "missing",
                           .is_named = true};
  EXPECT_EQ(report.broken, Broken{missing});
}

TEST(StartReport, AFileBesideTheApplicationThatIsNotListedIsNotFoundByTheRuntime) {
  BrokenFramework world;
  tests::WriteFile(world.folder / world.kApplication, tests::ManagedImage().Bytes());
  tests::WriteFile(world.folder / "product/Needed.dll", tests::AssemblyImage().bytes);

  const StartReport report = world.Examined(true);

  const BrokenFile unlisted{.path = world.folder / "product/Needed.dll",
                            .need = Need::kMain,
                            .is_application = true,
                            .detail = "not listed in the application's deps.json",
                            .is_named = true,
                            .is_listed = false};
  EXPECT_EQ(report.broken, Broken{unlisted});
}

TEST(StartReport, TheRuntimeFindsAssembliesWithoutRegardToTheCaseOfLetters) {
  BrokenFramework world;
  tests::WriteFile(world.folder / world.kApplication, tests::ManagedImage().Bytes());
  tests::WriteFile(world.folder / "product/needed.DLL", tests::AssemblyImage().bytes);
  world.assemblies.append(world.folder / "product/needed.DLL");

  EXPECT_TRUE(world.Examined(true).broken.empty());
}

}  // namespace
}  // namespace doctor
