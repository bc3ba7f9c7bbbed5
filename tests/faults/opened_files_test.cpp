// The files that a launch opens, whatever it is started with: those of a list, and no others.
#include <fcntl.h>
#include <fnmatch.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string>

#include "tests/faults/launch_world.h"
#include "tests/support/temp_folder.h"
#include "tests/support/text.h"
#include "tests/support/watched_calls.h"

namespace tests {
namespace {

namespace fs = std::filesystem;
using Lines = std::set<std::string>;
using Variables = std::map<std::string, std::string>;

// "open" or "look", and the path as it was given; what starts a process or reaches another one; "" for other calls.
std::string LineOf(const WatchedCall& call) {
  const std::string name = call.Name();
  if (name.starts_with("clone") || name.ends_with("fork") || name == "socket" || name == "unlink" || name == "mkdir") {
    return name;
  }
  if (name == "open" || name == "openat") {
    return "open " + call.Path();
  }
  const bool looks = name.starts_with("access") || name.starts_with("faccess") || name.ends_with("stat") ||
                     name == "statx" || name == "newfstatat" || name.starts_with("readlink");
  return looks && name != "fstat" && call.HasPath() ? "look " + call.Path() : "";
}

// What a file is opened with; empty for other calls.
std::optional<std::uint64_t> FlagsOfOpening(const WatchedCall& call) {
  const std::string name = call.Name();
  return name == "openat" ? std::optional(call.Argument(2))
         : name == "open" ? std::optional(call.Argument(1))
                          : std::nullopt;
}

// A folder with everything in it that a launch could be led astray to.
class Trap {
 public:
  Trap() {
    const std::string host = ReadFile(PLAIN_HOST);
    for (const char* file :
         {"libhostfxr.so", "libgcc_s.so.1", "libstdc++.so.6", "host/fxr/6.0.99/libhostfxr.so", "libcoreclr.so"}) {
      WriteFile(folder_ / file, host);
    }
    const std::string settings = "DotnetRootFolder=" + folder_.Path().string() + "\n";
    for (const char* file : {"dotnet_settings.ini", "quor/common/dotnet_settings.ini", ".config/dotnet_settings.ini"}) {
      WriteFile(folder_ / file, settings);
    }
    WriteFile(folder_ / "gconv-modules", "module UTF8// INTERNAL trap 1\n");
    WriteFile(folder_ / ".UTF8/LC_MESSAGES/libc.mo", "trap");
    WriteFile(folder_ / "grellin_utils.dll", "trap");
  }

  [[nodiscard]] std::string Path() const { return folder_.Path(); }

 private:
  TempFolder folder_;
};

// All that names folders, files or ways to look for them, but what acts before the launcher's first instruction.
Variables Hostile(const std::string& trap) {
  Variables variables;
  for (const char* name : {"APP_PATHS",
                           "BASH_ENV",
                           "COMPlus_GCName",
                           "CORECLR_PROFILER_PATH",
                           "CORE_LIBRARIES",
                           "CORE_ROOT",
                           "COREHOST_TRACEFILE",
                           "DOTNET_ADDITIONAL_DEPS",
                           "DOTNET_BUNDLE_EXTRACT_BASE_DIR",
                           "DOTNET_GCName",
                           "DOTNET_GCPath",
                           "DOTNET_HOST_PATH",
                           "DOTNET_INSTALL_DIR",
                           "DOTNET_ROOT",
                           "DOTNET_ROOT(x86)",
                           "DOTNET_ROOT_X64",
                           "DOTNET_SHARED_STORE",
                           "DOTNET_STARTUP_HOOKS",
                           "DotnetRootFolder",
                           "GCONV_PATH",
                           "HOME",
                           "I18NPATH",
                           "LOCALDOMAIN",
                           "NLSPATH",
                           "OUTPUT_CHARSET",
                           "PATH",
                           "PWD",
                           "OLDPWD",
                           "TEMP",
                           "TEMPDIR",
                           "TEXTDOMAINDIR",
                           "TMP",
                           "TMPDIR",
                           "TZDIR",
                           "XDG_CACHE_HOME",
                           "XDG_CONFIG_DIRS",
                           "XDG_CONFIG_HOME",
                           "XDG_DATA_DIRS",
                           "XDG_DATA_HOME",
                           "XDG_RUNTIME_DIR"}) {
    variables[name] = trap;
  }
  variables["TZ"] = ":" + trap + "/zone";
  variables["LANG"] = variables["LANGUAGE"] = variables["LC_ALL"] = variables["LC_MESSAGES"] = "../../../.." + trap;
  variables["COREHOST_TRACE"] = variables["COREHOST_TRACE_VERBOSITY"] = "4";
  variables["MALLOC_TRACE"] = trap + "/trace";
  variables["MALLOC_ARENA_MAX"] = variables["MALLOC_CHECK_"] = variables["MALLOC_PERTURB_"] = "1";
  variables["GLIBC_TUNABLES"] = "glibc.malloc.check=3:glibc.rtld.nns=1";
  variables["DOTNET_MULTILEVEL_LOOKUP"] = variables["DOTNET_EnableDiagnostics"] = "1";
  variables["BASH_FUNC_ls%%"] = "() { :; }";
  variables[""] = trap;
  return variables;
}

class OpenedFiles : public testing::Test {
 protected:
  void SetUp() override {
    const std::string why =
        IsInstrumented() ? "an instrumented launch opens files of its own" : WhyCallsCannotBeWatched();
    if (!why.empty()) {
      GTEST_SKIP() << why;
    }
  }

  // The launch must run that version; no line that is not in the list must come of it, nor of `more`.
  void ExpectNoOtherThanListed(Command launch, std::string_view version = kNewest, const std::string& more = "") {
    Lines lines;
    const auto note = [&](const WatchedCall& call) {
      lines.insert(LineOf(call));
      return Decision::Make();
    };
    EXPECT_TRUE(world_.Ran(launch.Watched(note).Run(), version));
    lines.erase("");
    EXPECT_TRUE(lines.contains("open " + std::string(kSettingsPath)));
    for (const std::string& line : lines) {
      EXPECT_TRUE(IsIn(Replaced(ReadFile(OPENED_FILES), "ROOT", world_.Runtime().Root()) + more, line)) << line;
    }
  }

  LaunchWorld world_;
  Trap trap_;

 private:
  static bool IsIn(const std::string& patterns, const std::string& line) {
    std::istringstream list(patterns);
    for (std::string pattern; std::getline(list, pattern);) {
      if (::fnmatch(pattern.c_str(), line.c_str(), 0) == 0) {
        return true;
      }
    }
    return false;
  }
};

TEST_F(OpenedFiles, AreThoseOfTheList) {
  ExpectNoOtherThanListed(world_.Launch());
}

TEST_F(OpenedFiles, AreThoseOfTheListWhateverTheEnvironmentIs) {
  ExpectNoOtherThanListed(world_.Launch().Variables(Hostile(trap_.Path())));
}

TEST_F(OpenedFiles, AreThoseOfTheListWhateverTheWorkingFolderIs) {
  ExpectNoOtherThanListed(world_.Launch().Folder(trap_.Path()).Variables(Hostile(".")));
}

TEST_F(OpenedFiles, AreThoseOfTheListWhateverTheArgumentsAre) {
  for (const std::string& name :
       {trap_.Path() + "/grellin_loader", std::string("grellin_loader"), std::string("-"), std::string(),
        std::string("$ORIGIN/../x"), std::string("../../x"), std::string(5'000, '/')}) {
    SCOPED_TRACE(name);
    ExpectNoOtherThanListed(world_.Launch().Name(name).Folder(trap_.Path()));
  }
}

// A library that is preloaded may start a program at any time, in a thread of its own.
TEST_F(OpenedFiles, AreNotInheritedByAProgramThatIsStarted) {
  Lines inherited;
  const auto note = [&](const WatchedCall& call) {
    if (const auto flags = FlagsOfOpening(call); flags && (*flags & O_CLOEXEC) == 0) {
      inherited.insert(call.Path());
    }
    return Decision::Make();
  };

  EXPECT_TRUE(world_.Ran(world_.Launch().Watched(note).Run(), kNewest));

  EXPECT_EQ(inherited, Lines());
}

// The reason of such a failure is a text of the C library, which has translations.
TEST_F(OpenedFiles, AreThoseOfTheListWhenALibraryCannotBeOpened) {
  fs::permissions(world_.Runtime().HostFile(kNewest), fs::perms::none);
  const Command launch = world_.Launch().Variables(Hostile(trap_.Path())).WithoutReadingEverything();

  ExpectNoOtherThanListed(launch, kOlder);
}

TEST_F(OpenedFiles, OfTheLocaleAreWhereLocpathSays) {
  const std::string locale = "open " + trap_.Path() + "/.";

  ExpectNoOtherThanListed(world_.Launch().Variable("LOCPATH", trap_.Path()), kNewest,
                          locale + "UTF8/LC_*\n" + locale + "utf8/LC_*\n");
}

}  // namespace
}  // namespace tests
