// Each file that a launch on a real runtime needs, spoilt in every way that files are spoilt.
#include "tests/real/real_fault.h"

namespace tests {
namespace {

using enum Damage;

constexpr const char* kRuns = "A launch would run the application.";
constexpr const char* kWithoutRunning = "status 0 without running the application: ";
constexpr const char* kRuntimeAgain = "install the .NET runtime";
constexpr const char* kProductAgain = "install the product again";
constexpr const char* kReadable = "chmod o+r";

TEST_F(FaultsOnRealDotnet, TheRuntimesLibrariesAreNamed) {
  Check(std::vector<FileFault>{
      {"libcoreclr.so", {kMissing, kDeadLink}, {"host-file-broken", "libcoreclr.so is missing", kRuntimeAgain}},
      {"libcoreclr.so",
       {kEmpty, kText, kZeros, kFolder, kHeader, kForeign},
       {"runtime-file-broken", "libcoreclr.so is broken: ", kRuntimeAgain}},
      {"libcoreclr.so", {kCut}, {"runtime-file-broken", "SIGBUS: libcoreclr.so is broken: cut short", kRuntimeAgain}},
      {"libcoreclr.so", {kOtherFile}, {"runtime-not-started", "the runtime does not start", kRuntimeAgain}},
      {"libcoreclr.so", {kUnreadable}, {"runtime-file-broken", "libcoreclr.so cannot be read by this user", kReadable}},
      {"libclrjit.so", {kMissing, kDeadLink}, {"runtime-file-broken", "libclrjit.so is missing", kRuntimeAgain}},
      {"libclrjit.so",
       {kEmpty, kText, kZeros, kFolder, kForeign},
       {"runtime-file-broken", "libclrjit.so is broken: ", kRuntimeAgain}},
      {"libclrjit.so", {kCut}, {"runtime-file-broken", "libclrjit.so is broken: cut short", kRuntimeAgain}},
      {"libclrjit.so", {kHeader}, {"runtime-file-broken", "SIGABRT: libclrjit.so", kRuntimeAgain}},
      {"libclrjit.so", {kOtherFile}, {"runtime-not-started", "It says: Failed to load JIT", kRuntimeAgain}},
      {"libclrjit.so", {kUnreadable}, {"runtime-file-broken", "libclrjit.so cannot be read by this user", kReadable}},
      {"libSystem.Native.so",
       {kMissing, kDeadLink},
       {"runtime-file-broken", "libSystem.Native.so is missing", kRuntimeAgain}},
      {"libSystem.Native.so",
       {kEmpty, kText, kZeros, kFolder, kHeader, kForeign},
       {"runtime-file-broken", "libSystem.Native.so is broken: ", kRuntimeAgain}},
      {"libSystem.Native.so", {kCut}, {"runtime-file-broken", "SIGBUS: libSystem.Native.so", kRuntimeAgain}},
      {"libSystem.Native.so",
       {kOtherFile},
       {"runtime-not-started", "the runtime does not start (SIGSEGV)", kRuntimeAgain}},
      {"libSystem.Native.so",
       {kUnreadable},
       {"runtime-file-broken", "libSystem.Native.so cannot be read by this user", kReadable}},
      {"libSystem.IO.Compression.Native.so", {kMissing, kEmpty, kCut, kForeign}, {"", kRuns, ""}},
  });
}

TEST_F(FaultsOnRealDotnet, TheRuntimesAssembliesAreNamed) {
  Check(std::vector<FileFault>{
      {"System.Private.CoreLib.dll",
       {kMissing, kDeadLink},
       {"runtime-file-broken", "System.Private.CoreLib.dll is missing", kRuntimeAgain}},
      {"System.Private.CoreLib.dll",
       {kEmpty, kText, kZeros, kFolder, kHeader, kCut, kForeign},
       {"runtime-file-broken", "System.Private.CoreLib.dll is broken: ", kRuntimeAgain}},
      {"System.Private.CoreLib.dll", {kOtherFile}, {"runtime-not-started", kWithoutRunning, kRuntimeAgain}},
      {"System.Private.CoreLib.dll",
       {kUnreadable},
       {"runtime-file-broken", "System.Private.CoreLib.dll cannot be read by this user", kReadable}},
      {"System.Runtime.dll",
       {kMissing, kDeadLink},
       {"runtime-file-broken", "SIGABRT: System.Runtime.dll is missing", kRuntimeAgain}},
      {"System.Runtime.dll",
       {kEmpty, kText, kZeros, kFolder, kHeader, kCut, kForeign},
       {"runtime-file-broken", "SIGABRT: System.Runtime.dll is broken: ", kRuntimeAgain}},
      {"System.Runtime.dll",
       {kOtherFile},
       {"runtime-file-broken", "System.Runtime.dll is broken: it is System.Xml.Linq", kRuntimeAgain}},
      {"System.Runtime.dll",
       {kUnreadable},
       {"runtime-file-broken", "System.Runtime.dll cannot be read by this user", kReadable}},
      {"System.Linq.dll",
       {kMissing, kEmpty, kText, kCut, kHeader, kZeros, kFolder, kDeadLink, kForeign, kOtherFile},
       {"runtime-file-broken", "System.Linq.dll is ", kRuntimeAgain}},
      {"System.Linq.dll",
       {kUnreadable},
       {"runtime-file-broken", "System.Linq.dll cannot be read by this user", kReadable}},
      {"System.Console.dll",
       {kMissing, kEmpty, kCut, kForeign},
       {"named-file-broken", "which ends as soon as it uses System.Console.dll", kRuntimeAgain}},
      {"System.Console.dll",
       {kUnreadable},
       {"named-file-broken", "which ends as soon as it uses System.Console.dll", kReadable}},
      {"System.Threading.dll",
       {kMissing, kZeros},
       {"named-file-broken", "which ends as soon as it uses System.Threading.dll", kRuntimeAgain}},
  });
}

TEST_F(FaultsOnRealDotnet, TheHostsFilesAreNamed) {
  Check(std::vector<FileFault>{
      {"libhostfxr.so", {kMissing, kFolder}, {"no-version", "no .NET 6.0 runtime is installed under", "install"}},
      {"libhostfxr.so", {kEmpty, kText, kZeros}, {"no-version-loads", "libhostfxr.so: not an ELF file", kRuntimeAgain}},
      {"libhostfxr.so", {kCut, kHeader}, {"cut-short", "libhostfxr.so is cut short", kRuntimeAgain}},
      {"libhostfxr.so", {kForeign}, {"other-machine", "libhostfxr.so is for another kind of machine", "install"}},
      {"libhostfxr.so", {kOtherFile}, {"no-version-loads", "cannot be loaded", kRuntimeAgain}},
      {"libhostfxr.so", {kDeadLink}, {"link-to-nowhere", "is a symbolic link that leads nowhere", "install"}},
      {"libhostfxr.so", {kUnreadable}, {"file-not-read", "this user cannot read", kReadable}},
      {"libhostpolicy.so", {kMissing, kDeadLink}, {"host-file-broken", "libhostpolicy.so is missing", kRuntimeAgain}},
      {"libhostpolicy.so",
       {kEmpty, kText, kZeros, kFolder, kHeader, kForeign},
       {"host-file-broken", "libhostpolicy.so is broken", kRuntimeAgain}},
      {"libhostpolicy.so",
       {kUnreadable},
       {"host-file-broken", "libhostpolicy.so cannot be read by this user", kReadable}},
      {"libhostpolicy.so", {kOtherFile}, {"host-refuses", "CoreHostEntryPointFailure", "see"}},
      {"libhostpolicy.so", {kCut}, {"host-file-broken", "SIGBUS: ", kRuntimeAgain}},
      {"Microsoft.NETCore.App.deps.json",
       {kMissing, kDeadLink},
       {"missing-framework", "Microsoft.NETCore.App 6.0.0 is needed", kRuntimeAgain}},
      {"Microsoft.NETCore.App.deps.json",
       {kEmpty, kText, kZeros, kCut},
       {"malformed-dependencies", "Microsoft.NETCore.App.deps.json is not JSON", kRuntimeAgain}},
      {"Microsoft.NETCore.App.deps.json",
       {kFolder},
       {"malformed-dependencies", "Microsoft.NETCore.App.deps.json is not a regular file", kRuntimeAgain}},
      {"Microsoft.NETCore.App.deps.json",
       {kUnreadable},
       {"malformed-dependencies", "Microsoft.NETCore.App.deps.json cannot be read by this user", kReadable}},
      {"Microsoft.NETCore.App.runtimeconfig.json", {kMissing, kDeadLink}, {"", kRuns, ""}},
      {"Microsoft.NETCore.App.runtimeconfig.json",
       {kEmpty, kText, kZeros, kCut},
       {"malformed-configuration", "Microsoft.NETCore.App.runtimeconfig.json is not JSON", kRuntimeAgain}},
      {"Microsoft.NETCore.App.runtimeconfig.json",
       {kFolder},
       {"malformed-configuration", "Microsoft.NETCore.App.runtimeconfig.json is not a regular file", kRuntimeAgain}},
      {"Microsoft.NETCore.App.runtimeconfig.json",
       {kUnreadable},
       {"malformed-configuration", "Microsoft.NETCore.App.runtimeconfig.json cannot be read by this user", kReadable}},
  });
}

TEST_F(FaultsOnRealDotnet, TheApplicationsFilesAreNamed) {
  Check(std::vector<FileFault>{
      {"grellin_utils.dll", {kMissing, kDeadLink}, {"missing-assembly", "grellin_utils.dll is missing", kProductAgain}},
      {"grellin_utils.dll",
       {kEmpty, kText, kZeros, kFolder, kHeader, kCut, kForeign},
       {"runtime-file-broken", "SIGABRT: grellin_utils.dll is broken: ", kProductAgain}},
      {"grellin_utils.dll",
       {kOtherFile},
       {"runtime-file-broken", "grellin_utils.dll is broken: it has no first function", kProductAgain}},
      {"grellin_utils.dll",
       {kUnreadable},
       {"runtime-file-broken", "grellin_utils.dll cannot be read by this user", kReadable}},
      {"grellin_utils.runtimeconfig.json",
       {kMissing, kDeadLink},
       {"missing-configuration", "grellin_utils.runtimeconfig.json is missing", kProductAgain}},
      {"grellin_utils.runtimeconfig.json",
       {kEmpty, kText, kZeros, kCut},
       {"malformed-configuration", "grellin_utils.runtimeconfig.json is not JSON", kProductAgain}},
      {"grellin_utils.runtimeconfig.json",
       {kFolder},
       {"malformed-configuration", "grellin_utils.runtimeconfig.json is not a regular file", kProductAgain}},
      {"grellin_utils.runtimeconfig.json",
       {kUnreadable},
       {"malformed-configuration", "grellin_utils.runtimeconfig.json cannot be read by this user", kReadable}},
      {"grellin_utils.deps.json", {kMissing, kDeadLink}, {"", kRuns, ""}},
      {"grellin_utils.deps.json",
       {kEmpty, kText, kZeros, kCut},
       {"malformed-dependencies", "grellin_utils.deps.json is not JSON", kProductAgain}},
      {"grellin_utils.deps.json",
       {kFolder},
       {"malformed-dependencies", "grellin_utils.deps.json is not a regular file", kProductAgain}},
      {"grellin_utils.deps.json",
       {kUnreadable},
       {"malformed-dependencies", "grellin_utils.deps.json cannot be read by this user", kReadable}},
  });
}

}  // namespace
}  // namespace tests
