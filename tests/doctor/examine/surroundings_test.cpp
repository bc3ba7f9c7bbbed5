#include "doctor/examine/surroundings.h"

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstddef>
#include <iterator>

#include "doctor/child/child.h"
#include "tests/support/scoped_environment.h"

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

TEST(Surroundings, MemoryThatMayNotBeWrittenAndThenExecutedIsSeen) {
  constexpr int kSetMemoryDenyWriteExecute = 65;  // PR_SET_MDWE, newer than these headers.
  if (::prctl(66, 0, 0, 0, 0) < 0) {
    GTEST_SKIP() << "this kernel cannot forbid it";
  }

  EXPECT_EQ(SeenAfter([] { ::prctl(kSetMemoryDenyWriteExecute, 1, 0, 0, 0); }).at(1), "may not");
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
