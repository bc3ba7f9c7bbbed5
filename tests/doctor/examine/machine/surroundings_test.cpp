#include "doctor/examine/machine/surroundings.h"

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstddef>
#include <iterator>

#include "doctor/child/child.h"
#include "tests/support/process.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

// What a child sees that has limited itself.
Answer SeenAfter(const std::function<void()>& change) {
  return RunInChild(
             [&] {
               change();
               const Surroundings seen = LookAround();
               return Answer{std::to_string(seen.open_files.value_or(0)),
                             seen.may_execute_written_memory ? "may" : "may not",
                             seen.has_memory_files ? "has" : "has not", std::to_string(seen.address_space.value_or(0)),
                             std::to_string(seen.file_size.value_or(0))};
             },
             std::chrono::seconds(60))
      .answer;
}

TEST(Surroundings, LimitsAreThoseOfThisProcess) {
  const Answer seen = SeenAfter([] {
    const rlimit files{17, 17};
    ::setrlimit(RLIMIT_NOFILE, &files);
  });

  EXPECT_EQ(seen.at(0), "17");
  EXPECT_EQ(seen.at(1), "may");
}

TEST(Surroundings, EachLimitIsItsOwn) {
  const Answer seen = SeenAfter([] {
    const rlimit space{3ULL << 45, 3ULL << 45};
    const rlimit size{1ULL << 30, 1ULL << 30};
    ::setrlimit(RLIMIT_AS, &space);
    ::setrlimit(RLIMIT_FSIZE, &size);
  });

  EXPECT_EQ(seen.at(3), std::to_string(3ULL << 45));
  EXPECT_EQ(seen.at(4), std::to_string(1ULL << 30));
}

TEST(Surroundings, AProcessThatHasNoDescriptorLeftHasMemoryFilesAllTheSame) {
  if (tests::IsSanitized()) {
    GTEST_SKIP() << "the sanitizer takes descriptors to look at memory";
  }
  const Answer seen = SeenAfter([] {
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_NOFILE, &none);
  });

  EXPECT_EQ(seen.at(2), "has");
}

// What a filter of system calls refuses.
void Refuse(long call, int error) {
  sock_filter rules[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                         BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned int>(call), 0, 1),
                         BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned int>(error)),
                         BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
  const sock_fprog program{std::size(rules), rules};
  ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program);
}

TEST(Surroundings, WhereMemoryFilesAreRefusedOrUnknownThereAreNone) {
  for (const int error : {EPERM, ENOSYS}) {
    EXPECT_EQ(SeenAfter([error] { Refuse(SYS_memfd_create, error); }).at(2), "has not") << error;
  }
  EXPECT_EQ(SeenAfter([] { Refuse(SYS_memfd_create, ENOMEM); }).at(2), "has");
}

TEST(Surroundings, MemoryThatASecurityPolicyForbidsToExecuteIsSeen) {
  for (const int error : {EACCES, EPERM}) {
    EXPECT_EQ(SeenAfter([error] { Refuse(SYS_mprotect, error); }).at(1), "may not") << error;
  }
  EXPECT_EQ(SeenAfter([] { Refuse(SYS_mprotect, ENOMEM); }).at(1), "may");
}

TEST(Surroundings, MemoryThatThereIsNoneOfIsNotForbidden) {
  if (tests::IsSanitized()) {
    GTEST_SKIP() << "a sanitizer takes memory to look at memory";
  }
  EXPECT_EQ(SeenAfter([] { Refuse(SYS_mmap, ENOMEM); }).at(1), "may");
}

TEST(Surroundings, MemoryThatMayNotBeWrittenAndThenExecutedIsSeen) {
  constexpr int kSetMemoryDenyWriteExecute = 65;  // PR_SET_MDWE, newer than these headers.
  if (::prctl(66, 0, 0, 0, 0) < 0) {
    GTEST_SKIP() << "this kernel cannot forbid it";
  }

  EXPECT_EQ(SeenAfter([] { ::prctl(kSetMemoryDenyWriteExecute, 1, 0, 0, 0); }).at(1), "may not");
}

// What a process sees whose control group is /service/part, with these limits; "none" where that cannot be laid out.
std::string MemoryOfGroups(const std::string& service, const std::string& part) {
  const Answer seen =
      RunInChild(
          [&]() -> Answer {
            const tests::TempFolder folder;
            tests::WriteFile(folder / "cgroup", "1:name=old:/other\n0::/service/part\n");
            if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                ::mount("none", "/sys/fs/cgroup", "tmpfs", 0, nullptr) != 0 ||
                ::mount((folder / "cgroup").c_str(), "/proc/self/cgroup", nullptr, MS_BIND, nullptr)) {
              return {"none"};
            }
            tests::WriteFile("/sys/fs/cgroup/service/memory.max", service);
            tests::WriteFile("/sys/fs/cgroup/service/part/memory.max", part);
            return {std::to_string(LookAround().group_memory.value_or(0))};
          },
          std::chrono::seconds(60))
          .answer;
  return seen.empty() ? "" : seen[0];
}

TEST(Surroundings, OfTheLimitsOfAllControlGroupsTheLowestHolds) {
  if (MemoryOfGroups("1\n", "1\n") == "none") {
    GTEST_SKIP() << "control groups cannot be laid out here";
  }

  EXPECT_EQ(MemoryOfGroups("100\n", "200\n"), "100");
  EXPECT_EQ(MemoryOfGroups("200\n", "100\n"), "100");
  EXPECT_EQ(MemoryOfGroups("200\n", "max\n"), "200");
  EXPECT_EQ(MemoryOfGroups("max\n", "max\n"), "0") << "there is no limit";
}

// Each with its value, in the order in which they are looked for.
std::string Text(const std::vector<std::pair<std::string, std::string>>& variables) {
  std::string text;
  for (const auto& [name, value] : variables) {
    text.append(name).append("=").append(value).append(" ");
  }
  return text;
}

TEST(Surroundings, VariablesOfTheCompilerAreSeenInBothSpellings) {
  tests::ScopedEnvironment environment;
  for (const char* name : {"AltJit", "AltJitName", "JitName", "JitPath", "JitOther"}) {
    environment.Set("DOTNET_" + std::string(name), "1").Set("COMPlus_" + std::string(name), "2");
  }

  EXPECT_EQ(Text(LookAround().compiler_variables),
            "DOTNET_AltJit=1 DOTNET_AltJitName=1 DOTNET_JitName=1 DOTNET_JitPath=1 "
            "COMPlus_AltJit=2 COMPlus_AltJitName=2 COMPlus_JitName=2 COMPlus_JitPath=2 ");
}

TEST(Surroundings, VariablesOfTheCollectorAreSeenInBothSpellings) {
  tests::ScopedEnvironment environment;
  for (const char* name :
       {"GCHeapHardLimit", "GCHeapHardLimitPercent", "GCRegionRange", "GCRegionSize", "GCPath", "GCName", "gcServer"}) {
    environment.Set("DOTNET_" + std::string(name), "1").Set("COMPlus_" + std::string(name), "2");
  }

  EXPECT_EQ(Text(LookAround().collector_variables),
            "DOTNET_GCHeapHardLimit=1 DOTNET_GCHeapHardLimitPercent=1 DOTNET_GCRegionRange=1 DOTNET_GCRegionSize=1 "
            "DOTNET_GCPath=1 COMPlus_GCHeapHardLimit=2 COMPlus_GCHeapHardLimitPercent=2 COMPlus_GCRegionRange=2 "
            "COMPlus_GCRegionSize=2 COMPlus_GCPath=2 ");
}

}  // namespace
}  // namespace doctor
