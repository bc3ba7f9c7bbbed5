#include "netloader/netloaderhostfxr/src/host_library.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/netloader/netloaderhostfxr/src/interposed_calls.h"
#include "tests/support/runtime_tree.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/stand_in_host.h"
#include "tests/support/temp_folder.h"
#include "tests/support/text.h"

namespace netloader {
namespace {

using tests::HostVariant;
using Story = std::vector<std::string>;

TEST(HostLibrary, AnOpenedLibraryHasAHandleAndNoError) {
  tests::RuntimeTree runtime;
  runtime.AddHost("6.0.1");

  const OpenedLibrary opened = OpenLibrary(runtime.HostFile("6.0.1").u16string());

  EXPECT_NE(opened.library.get(), nullptr);
  EXPECT_EQ(opened.error, "");
}

TEST(HostLibrary, APathThatDoesNotConvertIsNotOpened) {
  const tov::WideString path(5001, u'/');
  const tests::FailingAllocation fault(path.size() + 1);

  const OpenedLibrary opened = OpenLibrary(path);

  EXPECT_EQ(opened.library.get(), nullptr);
  EXPECT_EQ(opened.error, "can't convert fileName");
}

TEST(HostLibrary, AFileThatIsNoLibraryIsRefusedWithItsPathAndTheReason) {
  tests::RuntimeTree runtime;
  runtime.AddHostOfBytes("6.0.1", "text");

  const OpenedLibrary opened = OpenLibrary(runtime.HostFile("6.0.1").u16string());

  EXPECT_EQ(opened.library.get(), nullptr);
  EXPECT_EQ(opened.error, runtime.HostFile("6.0.1").string() + ": not an ELF file");
}

TEST(HostLibrary, AFifoInTheLibrarysPlaceIsRefusedAtOnce) {
  const tests::TempFolder folder;
  const auto fifo = folder.Path() / "libhostfxr.so";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);

  ::alarm(60);  // Ends the test should it wait for a writer.
  const OpenedLibrary opened = OpenLibrary(fifo.u16string());
  ::alarm(0);

  EXPECT_EQ(opened.library.get(), nullptr);
  EXPECT_EQ(opened.error, fifo.string() + ": not a regular file");
}

TEST(HostLibrary, AFileWhosePathMeansAnotherFileToTheDynamicLoaderIsRefused) {
  const tests::TempFolder folder;
  const auto file = folder / "$ORIGIN/libhostfxr.so";
  tests::WriteFile(file, tests::ReadFile(tests::HostLibrary()));

  const OpenedLibrary opened = OpenLibrary(file.u16string());

  EXPECT_EQ(opened.library.get(), nullptr);
  EXPECT_EQ(opened.error, file.string() + ": its path contains $ORIGIN, which the dynamic loader replaces");
}

TEST(HostLibrary, ACutLibraryWhereTheReplacedPathLeadsIsNotMapped) {
  const tests::TempFolder folder;
  const std::string library = tests::ReadFile(tests::HostLibrary());
  const auto file = folder / "$ORIGIN/libhostfxr.so";
  const auto own = std::filesystem::read_symlink("/proc/self/exe").parent_path().string();
  tests::WriteFile(file, library);
  tests::WriteFile(folder.Path().string() + "/" + own + "/libhostfxr.so", library.substr(0, 5000));

  EXPECT_EQ(OpenLibrary(file.u16string()).library.get(), nullptr);
}

TEST(HostLibrary, AFolderWhoseNameOnlyResemblesATokenIsAsGoodAsAnyOther) {
  const tests::TempFolder folder;
  const auto file = folder / "$LIBRARY/a$b/libhostfxr.so";
  tests::WriteFile(file, tests::ReadFile(tests::HostLibrary()));

  const LibraryHandle handle = OpenLibrary(file.u16string()).library;

  EXPECT_NE(handle.get(), nullptr);
}

TEST(HostLibrary, ARefusedFileLeavesNothingForALaterQuestionToTheDynamicLoader) {
  tests::RuntimeTree runtime;
  runtime.AddHostOfBytes("6.0.1", "text");
  ASSERT_EQ(::dlopen("/no/such/library", RTLD_NOW), nullptr);

  static_cast<void>(OpenLibrary(runtime.HostFile("6.0.1").u16string()));

  EXPECT_STREQ(::dlerror(), nullptr);
}

TEST(HostLibrary, EverySymbolIsBoundAtOnceSoThatAMissingOneFailsTheOpening) {
  tests::RuntimeTree runtime;
  runtime.AddHost("6.0.1", HostVariant::kUnresolved);

  const OpenedLibrary opened = OpenLibrary(runtime.HostFile("6.0.1").u16string());

  EXPECT_EQ(opened.library.get(), nullptr);
  EXPECT_EQ(opened.error,
            runtime.HostFile("6.0.1").string() + ": undefined symbol: stand_in_function_that_no_library_has");
  EXPECT_STREQ(::dlerror(), nullptr);
}

TEST(HostLibrary, SymbolsStayLocalToTheLibrary) {
  tests::RuntimeTree runtime;
  runtime.AddHost("6.0.1");

  const LibraryHandle handle = OpenLibrary(runtime.HostFile("6.0.1").u16string()).library;

  EXPECT_EQ(::dlsym(RTLD_DEFAULT, "hostfxr_run_app"), nullptr);
  EXPECT_NE(::dlsym(handle.get(), "hostfxr_run_app"), nullptr);
}

TEST(HostLibrary, BindingAtOnceIsAllThatIsAskedOfTheDynamicLoader) {
  tests::RuntimeTree runtime;
  runtime.AddHost("6.0.1");

  static_cast<void>(OpenLibrary(runtime.HostFile("6.0.1").u16string()));

  EXPECT_EQ(tests::LastOpenFlags(), RTLD_NOW);
}

TEST(HostLibrary, ADynamicLoaderWithoutWordsIsQuotedAsSuch) {
  tests::RuntimeTree runtime;
  runtime.AddHost("6.0.1", HostVariant::kNullRun);
  LibraryHandle handle = OpenLibrary(runtime.HostFile("6.0.1").u16string()).library;

  const ResolvedFunction function = ResolveFunction(handle.get(), "hostfxr_run_app");

  EXPECT_EQ(function.address, nullptr);
  EXPECT_EQ(function.error, "dlerror returned nullptr");
}

TEST(HostLibrary, AFunctionThatIsThereHasAnAddressAndNoError) {
  tests::RuntimeTree runtime;
  runtime.AddHost("6.0.1");
  LibraryHandle handle = OpenLibrary(runtime.HostFile("6.0.1").u16string()).library;

  for (const char* name : {"hostfxr_initialize_for_dotnet_command_line", "hostfxr_run_app", "hostfxr_close"}) {
    SCOPED_TRACE(name);
    const ResolvedFunction function = ResolveFunction(handle.get(), name);
    EXPECT_EQ(function.address, ::dlsym(handle.get(), name));
    EXPECT_EQ(function.error, "");
  }
}

TEST(HostLibrary, AFunctionThatIsMissingIsNamedByTheDynamicLoader) {
  tests::RuntimeTree runtime;
  runtime.AddHost("6.0.1", HostVariant::kLacksClose);
  LibraryHandle handle = OpenLibrary(runtime.HostFile("6.0.1").u16string()).library;

  const ResolvedFunction function = ResolveFunction(handle.get(), "hostfxr_close");

  EXPECT_EQ(function.address, nullptr);
  EXPECT_EQ(function.error, runtime.HostFile("6.0.1").string() + ": undefined symbol: hostfxr_close");
}

TEST(HostLibrary, ALongErrorAboutAFunctionKeepsItsBeginning) {
  const tests::ScriptedLoaderErrors errors({std::string(255, 'a') + "b"});

  const ResolvedFunction function = ResolveFunction(nullptr, "no_such_function");

  EXPECT_EQ(function.error, std::string(255, 'a'));
}

TEST(HostLibrary, AHandleClosesItsLibraryOnceAndHoldsNothingAfterwards) {
  tests::RuntimeTree runtime;
  runtime.AddHost("6.0.1");
  const tests::StandInHost host;
  const tests::ScopedEnvironment environment(host.Environment());
  {
    LibraryHandle handle = OpenLibrary(runtime.HostFile("6.0.1").u16string()).library;
    EXPECT_EQ(host.Story(), (Story{"6.0.1 loaded"}));

    handle.reset();

    EXPECT_EQ(handle.get(), nullptr);
    EXPECT_EQ(host.Story(), (Story{"6.0.1 loaded", "6.0.1 unloaded"}));
    handle.reset();
  }
  EXPECT_EQ(host.Story(), (Story{"6.0.1 loaded", "6.0.1 unloaded"}));
}

TEST(HostLibrary, AHandleClosesItsLibraryWhenDestroyed) {
  tests::RuntimeTree runtime;
  runtime.AddHost("6.0.1");
  const tests::StandInHost host;
  const tests::ScopedEnvironment environment(host.Environment());

  { LibraryHandle handle = OpenLibrary(runtime.HostFile("6.0.1").u16string()).library; }

  EXPECT_EQ(host.Story(), (Story{"6.0.1 loaded", "6.0.1 unloaded"}));
}

TEST(HostLibrary, AnOpenedLibraryThatNobodyTakesIsClosed) {
  tests::RuntimeTree runtime;
  runtime.AddHost("6.0.1");
  const tests::StandInHost host;
  const tests::ScopedEnvironment environment(host.Environment());

  static_cast<void>(OpenLibrary(runtime.HostFile("6.0.1").u16string()));

  EXPECT_EQ(host.Story(), (Story{"6.0.1 loaded", "6.0.1 unloaded"}));
}

TEST(HostLibrary, AHandleThatAnExceptionDestroysLeavesItsLibraryOpenOnPurpose) {
  tests::RuntimeTree runtime;
  runtime.AddHost("6.0.1");
  const tests::StandInHost host;
  const tests::ScopedEnvironment environment(host.Environment());
  const tov::WideString file = runtime.HostFile("6.0.1").u16string();

  EXPECT_THROW(
      {
        const LibraryHandle handle = OpenLibrary(file).library;
        throw std::runtime_error("on its way up");
      },
      std::runtime_error);

  EXPECT_EQ(host.Story(), (Story{"6.0.1 loaded"}));
  void* const left = ::dlopen(runtime.HostFile("6.0.1").c_str(), RTLD_NOW | RTLD_NOLOAD);
  ::dlclose(left);
  ::dlclose(left);
  EXPECT_EQ(host.Story(), (Story{"6.0.1 loaded", "6.0.1 unloaded"}));
}

struct ErrorText {
  const char* name;
  std::string text;
  std::string path;
  std::string bounded;
};

TEST(BoundedErrorText, AMessageOfAtMost255BytesIsKeptWholeAndALongerOneIsShortened) {
  const auto rows = std::to_array<ErrorText>({
      {"no message", "", "/a/libhostfxr.so", ""},
      {"255 bytes, with the folder in them", "/a: " + std::string(251, 'x'), "/a/libhostfxr.so",
       "/a: " + std::string(251, 'x')},
      {"256 bytes, a path of 6 bytes: the beginning", "/bc/de" + std::string(250, 'x'), "/bc/de",
       "/bc/de" + std::string(249, 'x')},
      {"256 bytes, no path: the beginning", "a" + std::string(255, 'x'), "", "a" + std::string(254, 'x')},
      {"256 bytes, a path of 7 bytes: shortened", "/bcd/ef" + std::string(250, 'x'), "/bcd/ef",
       ("<path>/ef" + std::string(250, 'x')).substr(4)},
      {"the folder everywhere", tests::Repeated("/folder/of/the/host ", 13), "/folder/of/the/host/libhostfxr.so",
       tests::Repeated("<path> ", 13)},
      {"the folder inside of other paths, too", "/opt/x/y" + tests::Repeated("/opt/xy", 40), "/opt/x/libhostfxr.so",
       ("<path>/y" + tests::Repeated("<path>y", 40)).substr(8 + 280 - 255)},
      {"exactly 255 bytes once shortened", std::string(249, 'x') + "/folder", "/folder/file",
       std::string(249, 'x') + "<path>"},
      {"a file in the root has an empty folder, which is nowhere", std::string(5, 'a') + std::string(255, 'x'),
       "/libhostfxr.so", std::string(255, 'x')},
      {"the end of what stays too long", "/folder" + std::string(300, 'x') + "end", "/folder/file",
       std::string(252, 'x') + "end"},
      {"a folder named like its replacement", tests::Repeated("<path> ", 40), "<path>/file",
       tests::Repeated("<path> ", 40).substr(280 - 255)},
      {"a path without any folder stands for itself", tests::Repeated("libhost ", 40), "libhost",
       tests::Repeated("<path> ", 40).substr(280 - 255)},
  });
  for (const ErrorText& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(BoundedErrorText(row.text, row.path), row.bounded);
  }
}

TEST(BoundedErrorText, IsWhatARefusedFileIsReportedWith) {
  tests::RuntimeTree runtime;
  const std::string version = "6.0." + std::string(250, '1');
  runtime.AddHostOfBytes(version, "text");
  const auto file = runtime.HostFile(version);
  ASSERT_GT(file.string().size(), 255U);

  EXPECT_EQ(OpenLibrary(file.u16string()).error, "<path>/libhostfxr.so: not an ELF file");
}

TEST(BoundedErrorText, IsWhatTheDynamicLoadersWordsAreReportedWith) {
  tests::RuntimeTree runtime;
  const std::string version = "6.0." + std::string(250, '1');
  runtime.AddHost(version, HostVariant::kUnresolved);

  EXPECT_EQ(OpenLibrary(runtime.HostFile(version).u16string()).error,
            "<path>/libhostfxr.so: undefined symbol: stand_in_function_that_no_library_has");
}

}  // namespace
}  // namespace netloader
