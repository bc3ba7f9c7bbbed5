// Limits, filters and variables around a product on a real runtime.
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>

#include "tests/real/real_fault.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

constexpr rlim_t kMebibyte = 1024 * 1024;

template <auto kResource, rlim_t kLimit>
void Limit(BrokenWorld& world) {
  world.steps.emplace_back([] {
    const rlimit limit{kLimit, kLimit};
    ::setrlimit(kResource, &limit);
  });
}

// A user without rights may not go beyond such a limit, as root may. It counts all processes of that user, so there is
// one for this test alone: others run beside it as nobody.
template <auto kResource, rlim_t kLimit>
void LimitUser(BrokenWorld& world) {
  constexpr unsigned int kFirst = 20'000;
  constexpr unsigned int kCount = 40'000;
  Limit<kResource, kLimit>(world);
  world.steps.emplace_back([user = kFirst + static_cast<unsigned int>(::getpid()) % kCount] { BecomeUser(user); });
}

// Has one system call fail with an error, as a filter of a container or of a service does.
void Forbid(unsigned int call, int error) {
  sock_filter filter[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned int>(error)),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  const sock_fprog program{static_cast<unsigned short>(std::size(filter)), filter};
  ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program);
}

template <unsigned int kCall, int kError>
void WithoutCall(BrokenWorld& world) {
  world.steps.emplace_back([] { Forbid(kCall, kError); });
}

// As MemoryDenyWriteExecute= does where the kernel has nothing of its own for it.
void ForbidExecutableMemory(unsigned int call) {
  sock_filter filter[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 3),
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[2])),
      BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, PROT_EXEC, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  const sock_fprog program{static_cast<unsigned short>(std::size(filter)), filter};
  ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program);
}

// Of kernels from 6.3 on; older headers do not name them.
constexpr int kSetMdwe = 65;
constexpr int kGetMdwe = 66;

void DenyWriteExecute(BrokenWorld& world) {
  world.steps.emplace_back([] { ::prctl(kSetMdwe, 1, 0, 0, 0); });
}

void DenyWriteExecuteByFilter(BrokenWorld& world) {
  world.steps.emplace_back([] { ForbidExecutableMemory(SYS_mprotect); });
}

// A mount of its own over a folder, which stays as it is; seen by the process alone.
void Remount(const std::string& folder, unsigned long flags) {
  ::unshare(CLONE_NEWNS);
  ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
  ::mount(folder.c_str(), folder.c_str(), nullptr, MS_BIND, nullptr);
  ::mount("none", folder.c_str(), nullptr, MS_BIND | MS_REMOUNT | flags, nullptr);
}

// What a cure does outside of that process is of no use to it.
void RemountRoot(BrokenWorld& world) {
  world.steps.emplace_back([root = world.runtime.Root().string()] { Remount(root, MS_NOEXEC); });
  world.can_be_mended = false;
}

void HidePath(const char* path) {
  ::unshare(CLONE_NEWNS);
  ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
  ::mount("none", path, "tmpfs", 0, nullptr);
}

constexpr const char* kRuns = "A launch would run the application.";
constexpr const char* kNotStarted = "status 0 without running the application: ";
constexpr const char* kMemory = "this process may not have memory that is first written and then executed";

TEST_F(FaultsOnRealDotnet, LimitsThatEndALaunchAreNamed) {
  if (IsInstrumented()) {
    GTEST_SKIP() << "an instrumented launch takes memory and descriptors of its own";
  }
  Check(std::vector<RealFault>{
      {"64 MiB of address space",
       Limit<RLIMIT_AS, 64 * kMebibyte>,
       {"address-space-limited", "the address space is limited to 64 MiB", "ulimit -v unlimited"}},
      {"256 MiB of address space",
       Limit<RLIMIT_AS, 256 * kMebibyte>,
       {"address-space-limited", "the address space is limited to 256 MiB", "ulimit -v unlimited"}},
      {"4 open files",
       Limit<RLIMIT_NOFILE, 4>,
       {"too-few-files", "only 4 files may be open at once", "ulimit -n 1024"}},
      {"8 open files",
       Limit<RLIMIT_NOFILE, 8>,
       {"open-files-limited", "only 8 files may be open at once", "ulimit -n 1024"}},
      {"12 open files",
       Limit<RLIMIT_NOFILE, 12>,
       {"open-files-limited", "only 12 files may be open at once", "ulimit -n 1024"}},
      {"files of 1 MiB",
       Limit<RLIMIT_FSIZE, kMebibyte>,
       {"file-size-limited", "a file may not be larger than 1 MiB", "ulimit -f"}},
      {"10 MiB of data",
       Limit<RLIMIT_DATA, 10 * kMebibyte>,
       {"data-limited", "the memory for data is limited to 10 MiB", "ulimit -d unlimited"}},
      {"two processes", LimitUser<RLIMIT_NPROC, 2>, {"no-threads", "no thread can be started", "TasksMax="}},
  });
}

TEST_F(FaultsOnRealDotnet, LimitsThatDoNotMatterLeaveTheDoctorGreen) {
  Check(std::vector<RealFault>{
      {"1 GiB of address space", Limit<RLIMIT_AS, 1024 * kMebibyte>, {"", kRuns, ""}},
      {"64 open files", Limit<RLIMIT_NOFILE, 64>, {"", kRuns, ""}},
      {"files of 100 MiB", Limit<RLIMIT_FSIZE, 100 * kMebibyte>, {"", kRuns, ""}},
      {"a small stack", Limit<RLIMIT_STACK, 256 * 1024>, {"", kRuns, ""}},
      {"a stack without end", Limit<RLIMIT_STACK, RLIM_INFINITY>, {"", kRuns, ""}},
      {"no locked memory", Limit<RLIMIT_MEMLOCK, 0>, {"", kRuns, ""}},
      {"little data", Limit<RLIMIT_DATA, 128 * kMebibyte>, {"", kRuns, ""}},
      {"an ordinary user", [](BrokenWorld& world) { world.AsNobody(); }, {"", kRuns, ""}},
      {"an ordinary user with some processes", LimitUser<RLIMIT_NPROC, 64>, {"", kRuns, ""}},
  });
}

TEST_F(FaultsOnRealDotnet, AServiceThatMayNotExecuteWrittenMemoryIsToldSo) {
  if (::prctl(kGetMdwe, 0, 0, 0, 0) < 0) {
    GTEST_SKIP() << "the kernel is too old to deny it";
  }
  Check(std::vector<RealFault>{
      {"no memory that is written and executed",
       DenyWriteExecute,
       {"memory-not-executable", kMemory, "MemoryDenyWriteExecute=no"}},
  });
}

TEST_F(FaultsOnRealDotnet, FiltersThatEndALaunchAreNamed) {
  const std::string remount = "mount -o remount,exec " + std::filesystem::temp_directory_path().string() + "/";
  Check(std::vector<RealFault>{
      {"a filter against memory that is written and executed",
       DenyWriteExecuteByFilter,
       {"memory-not-executable", kMemory, "MemoryDenyWriteExecute=no"}},
      {"no threads", WithoutCall<SYS_clone3, EPERM>, {"no-threads", "no thread can be started", "TasksMax="}},
      {"a root mounted noexec", RemountRoot, {"noexec", "is mounted noexec", remount.c_str()}},
      {"no /proc",
       [](BrokenWorld& world) { world.steps.emplace_back([] { HidePath("/proc"); }); },
       {"executable-folder-unknown", "the folder of the executable cannot be determined", "/proc mounted"}},
  });
}

// A thread that the runtime has started aborts then, unless the launch has ended before.
TEST_F(FaultsOnRealDotnet, AFilterAgainstStacksForSignalsIsNamed) {
  if (IsInstrumented()) {
    GTEST_SKIP() << "an instrumented launch takes longer to end, and is aborted while it does";
  }
  Check(std::vector<RealFault>{
      {"no stack for signals",
       WithoutCall<SYS_sigaltstack, EPERM>,
       {"runtime-not-started", kNotStarted, "install the .NET runtime again"}},
  });
}

TEST_F(FaultsOnRealDotnet, FiltersThatDoNotMatterLeaveTheDoctorGreen) {
  Check(std::vector<RealFault>{
      {"no files in memory", WithoutCall<SYS_memfd_create, ENOSYS>, {"", kRuns, ""}},
      {"forbidden files in memory", WithoutCall<SYS_memfd_create, EPERM>, {"", kRuns, ""}},
      {"an old kernel's way to make threads", WithoutCall<SYS_clone3, ENOSYS>, {"", kRuns, ""}},
      {"no barriers", WithoutCall<SYS_membarrier, EPERM>, {"", kRuns, ""}},
      {"no sockets", WithoutCall<SYS_socket, EPERM>, {"", kRuns, ""}},
      {"an old kernel's random numbers", WithoutCall<SYS_getrandom, ENOSYS>, {"", kRuns, ""}},
      {"/tmp read-only",
       [](BrokenWorld& world) { world.steps.emplace_back([] { Remount("/tmp", MS_RDONLY); }); },
       {"", kRuns, ""}},
      {"no shared memory",
       [](BrokenWorld& world) { world.steps.emplace_back([] { HidePath("/dev/shm"); }); },
       {"", kRuns, ""}},
      {"no devices", [](BrokenWorld& world) { world.steps.emplace_back([] { HidePath("/dev"); }); }, {"", kRuns, ""}},
      {"no /sys", [](BrokenWorld& world) { world.steps.emplace_back([] { HidePath("/sys"); }); }, {"", kRuns, ""}},
      {"no /etc", [](BrokenWorld& world) { world.steps.emplace_back([] { HidePath("/etc"); }); }, {"", kRuns, ""}},
  });
}

TEST_F(FaultsOnRealDotnet, VariablesThatEndALaunchAreNamed) {
  const char* const kCollector = "the garbage collector cannot be started with ";
  Check(std::vector<VariableFault>{
      {"DOTNET_GCHeapHardLimit", "10", {"collector-variable", kCollector, "unset DOTNET_GCHeapHardLimit"}},
      {"DOTNET_GCHeapHardLimit", "100000", {"collector-variable", kCollector, "unset DOTNET_GCHeapHardLimit"}},
      {"COMPlus_GCHeapHardLimit", "10", {"collector-variable", kCollector, "unset COMPlus_GCHeapHardLimit"}},
      {"DOTNET_GCPath", "/no/such/library.so", {"collector-variable", kCollector, "unset DOTNET_GCPath"}},
      {"DOTNET_GCRegionRange", "1000", {"collector-variable", kCollector, "unset DOTNET_GCRegionRange"}},
      {"DOTNET_GCRegionSize", "10000000000", {"collector-variable", kCollector, "unset DOTNET_GCRegionSize"}},
      {"DOTNET_AltJit", "*", {"compiler-variable", "cannot be loaded with DOTNET_AltJit=*", "unset DOTNET_AltJit"}},
      {"DOTNET_JitName",
       "libnone.so",
       {"compiler-variable", "cannot be loaded with DOTNET_JitName=", "unset DOTNET_JitName"}},
      {"DOTNET_ROLL_FORWARD", "Disable", {"missing-framework", "and roll-forward is Disable", "install"}},
      {"DOTNET_ROLL_FORWARD", "Minor", {"missing-framework", "and roll-forward is Minor", "install"}},
      {"DOTNET_ROLL_FORWARD",
       "Sometimes",
       {"roll-forward-variable", "DOTNET_ROLL_FORWARD=Sometimes has no meaning", "unset"}},
  });
}

TEST_F(FaultsOnRealDotnet, VariablesThatDoNotMatterLeaveTheDoctorGreen) {
  Check(std::vector<VariableFault>{
      {"DOTNET_GCHeapHardLimit", "4000000", {"", kRuns, ""}},
      {"DOTNET_GCHeapHardLimitPercent", "1", {"", kRuns, ""}},
      {"DOTNET_GCName", "libnone.so", {"", kRuns, ""}},
      {"COMPlus_GCName", "libnone.so", {"", kRuns, ""}},
      {"DOTNET_STARTUP_HOOKS", "/no/such.dll", {"", kRuns, ""}},
      {"DOTNET_gcServer", "1", {"", kRuns, ""}},
      {"DOTNET_EnableWriteXorExecute", "0", {"", kRuns, ""}},
      {"DOTNET_ReadyToRun", "0", {"", kRuns, ""}},
      {"DOTNET_ROLL_FORWARD", "Major", {"", kRuns, ""}},
      {"DOTNET_ROLL_FORWARD", "", {"", kRuns, ""}},
      {"DOTNET_ROOT", "/nowhere", {"", kRuns, ""}},
      {"DOTNET_ADDITIONAL_DEPS", "/nowhere", {"", kRuns, ""}},
      {"DOTNET_SYSTEM_GLOBALIZATION_INVARIANT", "0", {"", kRuns, ""}},
      {"DOTNET_DefaultStackSize", "4000", {"", kRuns, ""}},
      {"CORECLR_ENABLE_PROFILING", "1", {"", kRuns, ""}},
      {"TMPDIR", "/nowhere", {"", kRuns, ""}},
      {"HOME", "/nowhere", {"", kRuns, ""}},
      {"LD_LIBRARY_PATH", "/nowhere", {"", kRuns, ""}},
      {"LD_PRELOAD", "/nowhere.so", {"", kRuns, ""}},
      {"LANG", "xx_XX", {"", kRuns, ""}},
      {"COREHOST_TRACE", "1", {"", kRuns, ""}},
      {"GREETING", "\xff", {"", kRuns, ""}},
  });
}

}  // namespace
}  // namespace tests
