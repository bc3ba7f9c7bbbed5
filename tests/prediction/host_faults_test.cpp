// Faults within the host, of the surroundings and of the executables: what the doctor says, and how the launch ends.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <string>

#include "tests/prediction/fault.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

using enum HostFunction;

constexpr const char* kVersion = "6.0.36";

// The host's documented statuses and others, as it gives them when it is asked to prepare the application.
template <unsigned int kStatus>
void Refuse(KnownWorld& world) {
  world.host.Returns(kInitialize, static_cast<int>(kStatus));
}

TEST(HostFaults, ARefusalIsGivenItsDocumentedName) {
  const Fault faults[] = {
      {"0x80008081", Refuse<0x80008081>, "status-255", "host-refuses", "0x80008081 InvalidArgFailure", "see"},
      {"0x80008082", Refuse<0x80008082>, "status-255", "host-refuses", "0x80008082 CoreHostLibLoadFailure", "see"},
      {"0x80008083", Refuse<0x80008083>, "status-255", "host-refuses", "0x80008083 CoreHostLibMissingFailure", "see"},
      {"0x80008084", Refuse<0x80008084>, "status-255", "host-refuses", "0x80008084 CoreHostEntryPointFailure", "see"},
      {"0x80008087", Refuse<0x80008087>, "status-255", "host-refuses", "0x80008087 CoreClrResolveFailure", "see"},
      {"0x80008088", Refuse<0x80008088>, "status-255", "host-refuses", "0x80008088 CoreClrBindFailure", "see"},
      {"0x8000808b", Refuse<0x8000808b>, "status-255", "host-refuses", "0x8000808b ResolverInitFailure", "see"},
      {"0x8000808c", Refuse<0x8000808c>, "status-255", "host-refuses", "0x8000808c ResolverResolveFailure", "see"},
      {"0x80008092", Refuse<0x80008092>, "status-255", "host-refuses", "0x80008092 LibHostInvalidArgs", "see"},
      {"0x80008093", Refuse<0x80008093>, "status-255", "host-refuses", "0x80008093 InvalidConfigFile", "see"},
      {"0x80008094", Refuse<0x80008094>, "status-255", "host-refuses", "0x80008094 AppArgNotRunnable", "see"},
      {"0x80008096", Refuse<0x80008096>, "status-255", "host-refuses", "0x80008096 FrameworkMissingFailure", "see"},
      {"0x8000809c", Refuse<0x8000809c>, "status-255", "host-refuses", "0x8000809c FrameworkCompatFailure", "see"},
      {"0x800080a3", Refuse<0x800080a3>, "status-255", "host-refuses", "0x800080a3 HostInvalidState", "see"},
      {"one that is not documented", Refuse<0x8000ffff>, "status-255", "host-refuses", "0x8000ffff", "see"},
      {"a success of another kind", Refuse<1>, "status-255", "host-refuses", "0x00000001", "see"},
      {"minus one", Refuse<0xffffffff>, "status-255", "host-refuses", "0xffffffff", "see"},
      {"with words",
       [](KnownWorld& world) {
         world.host.Says(kInitialize, "It was not possible to find it.").Returns(kInitialize, -1);
       },
       "status-255", "host-refuses", "the host refuses the application", "see"},
  };
  Check(faults);
}

TEST(HostFaults, AnEndWithinTheHostIsNamed) {
  const char* const kInHost = "while it prepares the application";
  const char* const kWhileLoaded = "while it is loaded";
  const char* const kAgain = "install the .NET runtime 6.0.36 again";
  const Fault faults[] = {
      {"no handle", [](KnownWorld& world) { world.host.GivesNoHandle(); }, "status-255", "no-context",
       "gives nothing to run it with", kAgain},
      {"an exception", [](KnownWorld& world) { world.host.Throws(kInitialize, "words"); }, "aborts", "ends-in-host",
       "the host throws an exception", kAgain},
      {"a thrown number", [](KnownWorld& world) { world.host.Throws(kInitialize, "int"); }, "aborts", "ends-in-host",
       "the host throws an exception", kAgain},
      {"an exit", [](KnownWorld& world) { world.host.Exits(kInitialize, 9); }, "exits", "ends-in-host",
       "the host ends the process", kAgain},
      {"an exit with 0", [](KnownWorld& world) { world.host.Exits(kInitialize, 0); }, "exits", "ends-in-host",
       "the host ends the process", kAgain},
      {"SIGSEGV", [](KnownWorld& world) { world.host.Dies(kInitialize, SIGSEGV); }, "dies", "ends-in-host",
       "the host crashes", kAgain},
      {"SIGBUS", [](KnownWorld& world) { world.host.Dies(kInitialize, SIGBUS); }, "dies", "ends-in-host",
       "the host crashes", kAgain},
      {"SIGILL", [](KnownWorld& world) { world.host.Dies(kInitialize, SIGILL); }, "dies", "ends-in-host",
       "the host crashes", kAgain},
      {"SIGABRT", [](KnownWorld& world) { world.host.Dies(kInitialize, SIGABRT); }, "dies", "ends-in-host", kInHost,
       kAgain},
      {"SIGKILL", [](KnownWorld& world) { world.host.Dies(kInitialize, SIGKILL); }, "dies", "ends-in-host", kInHost,
       kAgain},
      {"SIGSYS", [](KnownWorld& world) { world.host.Dies(kInitialize, SIGSYS); }, "dies", "ends-in-host", kInHost,
       kAgain},
      {"an exception while it is closed", [](KnownWorld& world) { world.host.Throws(kClose, "words"); }, "aborts",
       "ends-in-host", "throws an exception", kAgain},
      {"a crash while it is loaded", [](KnownWorld& world) { world.AddOddHost(kVersion, "comes_Crash"); }, "dies",
       "ends-while-loading", kWhileLoaded, kAgain},
      {"SIGBUS while it is loaded", [](KnownWorld& world) { world.AddOddHost(kVersion, "comes_BusError"); }, "dies",
       "ends-while-loading", kWhileLoaded, kAgain},
      {"an abort while it is loaded", [](KnownWorld& world) { world.AddOddHost(kVersion, "comes_Abort"); }, "dies",
       "ends-while-loading", kWhileLoaded, kAgain},
      {"an exit while it is loaded", [](KnownWorld& world) { world.AddOddHost(kVersion, "comes_Exit"); }, "exits",
       "ends-while-loading", kWhileLoaded, kAgain},
      {"an exit with 0 while it is loaded", [](KnownWorld& world) { world.AddOddHost(kVersion, "comes_ExitWell"); },
       "exits", "ends-while-loading", kWhileLoaded, kAgain},
      {"an exception while it is loaded", [](KnownWorld& world) { world.AddOddHost(kVersion, "comes_ThrowError"); },
       "dies", "ends-while-loading", kWhileLoaded, kAgain},
      {"a crash after a refusal", [](KnownWorld& world) { world.AddOddHost(kVersion, "refuses_and_goes_Crash"); },
       "dies", "ends-in-host", "crashes", kAgain},
      {"a crash for want of a function", [](KnownWorld& world) { world.AddOddHost(kVersion, "lacks_and_goes_Crash"); },
       "dies", "ends-while-loading", kWhileLoaded, kAgain},
      {"a crash of the newer of two", [](KnownWorld& world) { world.AddOddHost("6.0.37", "comes_Crash"); }, "dies",
       "ends-while-loading", "6.0.37/libhostfxr.so crashes", "install the .NET runtime 6.0.37 again"},
      {"words while it is loaded",
       [](KnownWorld& world) {
         world.AddOddHost(kVersion, "comes_Talk");
         world.start.hosts_record = false;
       },
       "runs", "", "The host accepts the application", ""},
  };
  Check(faults);
}

template <unsigned int kStatus>
void DoNotStart(KnownWorld& world) {
  world.host.Returns(HostFunction::kStart, static_cast<int>(kStatus)).Returns(kRun, static_cast<int>(kStatus));
}

template <int kSignal>
void DieAtStart(KnownWorld& world) {
  world.host.Dies(HostFunction::kStart, kSignal).Dies(kRun, kSignal);
}

TEST(HostFaults, ARuntimeThatDoesNotStartIsNamed) {
  const char* const kNot = "the runtime does not start";
  const Fault faults[] = {
      {"the host's status", DoNotStart<0x80008089>, "not-started", "runtime-not-started", kNot, "install"},
      {"out of memory", DoNotStart<0x8007000e>, "not-started", "runtime-not-started", kNot, "install"},
      {"no permission", DoNotStart<0x80070005>, "not-started", "runtime-not-started", kNot, "install"},
      {"an unspecified failure", DoNotStart<0x80004005>, "not-started", "runtime-not-started", kNot, "install"},
      {"SIGSEGV", DieAtStart<SIGSEGV>, "dies", "runtime-not-started", kNot, "install"},
      {"SIGABRT", DieAtStart<SIGABRT>, "dies", "runtime-not-started", kNot, "install"},
      {"SIGILL", DieAtStart<SIGILL>, "dies", "runtime-not-started", kNot, "install"},
      {"an exit", [](KnownWorld& world) { world.host.Exits(HostFunction::kStart, 131).Exits(kRun, 131); }, "exits",
       "runtime-not-started", kNot, "install"},
      {"a host that cannot be asked",
       [](KnownWorld& world) { world.runtime.AddHost(kVersion, HostVariant::kLacksStart); }, "runs", "",
       "The host accepts the application", ""},
  };
  Check(faults);
}

template <int kResource, rlim_t kLimit>
void Limit(KnownWorld& world) {
  world.start.steps.emplace_back([] {
    const rlimit limit{kLimit, kLimit};
    ::setrlimit(static_cast<__rlimit_resource>(kResource), &limit);
  });
}

void Set(KnownWorld& world, const char* name, const char* value) {
  world.start.variables[name] = value;
}

TEST(HostFaults, SurroundingsThatDoNotMatterLeaveTheDoctorGreen) {
  const Fault faults[] = {
      {"an empty TMP", [](KnownWorld& world) { Set(world, "TMP", ""); }, "runs", "", "A launch would run", ""},
      {"a TMP that is not there", [](KnownWorld& world) { Set(world, "TMP", "/nowhere"); }, "runs", "",
       "A launch would run", ""},
      {"a library to be loaded first that is not there",
       [](KnownWorld& world) { Set(world, "LD_PRELOAD", "/nowhere/lib.so"); }, "runs", "", "A launch would run", ""},
      {"another library path", [](KnownWorld& world) { Set(world, "LD_LIBRARY_PATH", "/nowhere"); }, "runs", "",
       "A launch would run", ""},
      {"a locale that is not there", [](KnownWorld& world) { Set(world, "LC_ALL", "xx_XX.UTF-8"); }, "runs", "",
       "A launch would run", ""},
      {"another collector, which the launcher takes away",
       [](KnownWorld& world) { Set(world, "DOTNET_GCName", "libnone.so"); }, "runs", "", "A launch would run", ""},
      {"a start-up hook, which the launcher takes away",
       [](KnownWorld& world) { Set(world, "DOTNET_STARTUP_HOOKS", "/nowhere.dll"); }, "runs", "", "A launch would run",
       ""},
      {"a variable that is not UTF-8", [](KnownWorld& world) { Set(world, "GREETING", "\xff"); }, "runs", "",
       "A launch would run", ""},
      {"a folder that is gone", [](KnownWorld& world) { world.start.folder = "/proc/self/task"; }, "runs", "",
       "A launch would run", ""},
  };
  Check(faults);
}

TEST(HostFaults, LimitsThatDoNotMatterLeaveTheDoctorGreen) {
  if (IsSanitized()) {
    GTEST_SKIP() << "a sanitizer needs more";
  }
  const Fault faults[] = {
      {"few descriptors", Limit<RLIMIT_NOFILE, 16>, "runs", "", "A launch would run", ""},
      {"a small stack", Limit<RLIMIT_STACK, 256 * 1024>, "runs", "", "A launch would run", ""},
      {"no core files", Limit<RLIMIT_CORE, 0>, "runs", "", "A launch would run", ""},
      {"no locked memory", Limit<RLIMIT_MEMLOCK, 0>, "runs", "", "A launch would run", ""},
  };
  Check(faults);
}

// Both stand in a folder of that name.
void MoveExecutables(KnownWorld& world, const fs::path& folder) {
  fs::create_directories(folder);
  fs::copy_file(LauncherFile(), folder / "loader");
  fs::copy_file(DoctorFile(), folder / "doctor");
  world.start.launcher = folder / "loader";
  world.start.doctor = folder / "doctor";
}

TEST(HostFaults, TheExecutablesFolderIsNamed) {
  const Fault faults[] = {
      {"it is not UTF-8", [](KnownWorld& world) { MoveExecutables(world, world.runtime.Root() / "\xff"); }, "aborts",
       "executable-folder-unknown", "the folder of the executable cannot be determined", "install the product"},
      {"it holds blanks and quotes",
       [](KnownWorld& world) { MoveExecutables(world, world.runtime.Root() / "a 'b' \"c\""); }, "runs", "",
       "A launch would run", ""},
      {"it is in another script", [](KnownWorld& world) { MoveExecutables(world, world.runtime.Root() / "корень"); },
       "runs", "", "A launch would run", ""},
  };
  Check(faults);
}

}  // namespace
}  // namespace tests
