#include "doctor/examine/machine/identity.h"

#include <gtest/gtest.h>
#include <linux/capability.h>
#include <linux/securebits.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <fstream>

#include "doctor/child/child.h"
#include "tests/support/scoped_environment.h"

namespace doctor {
namespace {

constexpr const char* kUser = "nobody";

// The line of this process's status that begins so.
std::string StatusLine(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(name)) {
      return line;
    }
  }
  return {};
}

// What a process has become that keeps its rights when it changes its number; first what speaks against it.
Answer Became() {
  return RunInChild(
             []() -> Answer {
               ::prctl(PR_SET_SECUREBITS, SECBIT_NO_SETUID_FIXUP);
               const std::string reason = Become(kUser);
               return {reason,
                       tests::Variable("HOME").value_or(""),
                       tests::Variable("USER").value_or(""),
                       tests::Variable("LOGNAME").value_or(""),
                       StatusLine("Uid:"),
                       StatusLine("CapEff:"),
                       StatusLine("CapPrm:"),
                       std::to_string(::prctl(PR_GET_DUMPABLE))};
             },
             std::chrono::seconds(60))
      .answer;
}

TEST(Identity, NothingOfRootIsLeft) {
  const passwd* entry = ::getpwnam(kUser);
  if (::geteuid() != 0 || entry == nullptr) {
    GTEST_SKIP() << "only root may become another user";
  }
  tests::ScopedEnvironment environment;
  environment.Set("HOME", "/root").Set("USER", "root").Set("LOGNAME", "root");

  const Answer became = Became();

  ASSERT_EQ(became.size(), 8U);
  if (became[0].starts_with("the rights of")) {
    GTEST_SKIP() << became[0];
  }
  const std::string id = std::to_string(entry->pw_uid);
  EXPECT_EQ(became[0], "");
  EXPECT_EQ(became[1], entry->pw_dir);
  EXPECT_EQ(became[2], kUser);
  EXPECT_EQ(became[3], kUser);
  EXPECT_EQ(became[4], "Uid:\t" + id + "\t" + id + "\t" + id + "\t" + id);
  EXPECT_EQ(became[5], "CapEff:\t0000000000000000");
  EXPECT_EQ(became[6], "CapPrm:\t0000000000000000");
  EXPECT_EQ(became[7], "1") << "its folder under /proc is its own";
}

TEST(Identity, WhatCannotBecomeAnotherUserSaysWhy) {
  if (::geteuid() != 0 || ::getpwnam(kUser) == nullptr) {
    GTEST_SKIP() << "only root may become another user";
  }
  const auto lackRights = []() -> Answer {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    const __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3] = {};
    ::syscall(SYS_capset, &header, none);
    return {Become(kUser), Become("no such user")};
  };

  EXPECT_EQ(
      RunInChild(lackRights, std::chrono::seconds(60)).answer,
      (Answer{"the rights of nobody cannot be taken on: Operation not permitted", "there is no user 'no such user'"}));
}

}  // namespace
}  // namespace doctor
