#include "doctor/examine/machine/machine.h"

#include <grp.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <regex>
#include <string>
#include <utility>

#include "doctor/child/child.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

TEST(Machine, HasTheUserThatThisProcessRunsAs) {
  const Machine machine = LookAtMachine();

  EXPECT_EQ(machine.user_id, ::geteuid());
  EXPECT_EQ(machine.group_id, ::getegid());
  EXPECT_FALSE(machine.groups.empty());
}

TEST(Machine, HasEachGroupOnceWithItsNameOrNumber) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root may take on groups";
  }
  constexpr gid_t kNameless = 4'000'000'000;
  const auto lookAround = []() -> Answer {
    const gid_t groups[] = {kNameless, ::getegid()};
    return ::setgroups(std::size(groups), groups) == 0 ? LookAtMachine().groups : Answer{"refused"};
  };

  const Answer groups = RunInChild(lookAround, std::chrono::seconds(60)).answer;

  if (groups == Answer{"refused"}) {
    GTEST_SKIP() << "groups cannot be taken on in this namespace";
  }
  ASSERT_EQ(groups.size(), 2U);
  EXPECT_EQ(groups[1], std::to_string(kNameless));
}

TEST(Machine, HasANameAKernelAndACLibrary) {
  const Machine machine = LookAtMachine();

  EXPECT_NE(machine.host, "");
  EXPECT_TRUE(machine.kernel.starts_with("Linux ")) << machine.kernel;
  EXPECT_TRUE(machine.c_library.starts_with("glibc 2.")) << machine.c_library;
}

// What the machine calls itself with these lines in /etc/os-release; "none" where it cannot be laid out.
std::string SystemOf(const std::string& lines) {
  const auto lookAround = [&]() -> Answer {
    const tests::TempFolder folder;
    tests::WriteFile(folder / "os-release", lines);
    if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount((folder / "os-release").c_str(), "/etc/os-release", nullptr, MS_BIND, nullptr) != 0) {
      return {"none"};
    }
    return {LookAtMachine().system};
  };
  const Answer answer = RunInChild(lookAround, std::chrono::seconds(60)).answer;
  return answer.empty() ? "no answer" : answer[0];
}

TEST(Machine, ItsSystemIsItsNameAndVersionWithoutQuotesAndWhatEveryNameHas) {
  if (SystemOf("") == "none") {
    GTEST_SKIP() << "no file can be mounted here";
  }

  EXPECT_EQ(SystemOf("PRETTY_NAME=\"Debian GNU/Linux 12\"\nNAME=\"Debian GNU/Linux\"\nVERSION_ID=\"12\"\n"),
            "Debian 12");
  EXPECT_EQ(SystemOf("VERSION_ID=39\nVERSION=\"39 (Workstation)\"\nNAME=Fedora\n"), "Fedora 39");
  EXPECT_EQ(SystemOf("NAME=\"Arch Linux\"\n"), "Arch Linux");
  EXPECT_EQ(SystemOf("NAME=\"\nVERSION_ID=\"\"\n"), "\"") << "one quote quotes nothing";
  EXPECT_EQ(SystemOf("ID=none\n"), "");
}

TEST(Machine, ItsTimeHasTheDistanceFromGreenwich) {
  tests::ScopedEnvironment zone;
  zone.Set("TZ", "XXX-05:30");

  EXPECT_TRUE(std::regex_match(LookAtMachine().time, std::regex(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\+05:30)")))
      << LookAtMachine().time;
}

TEST(Machine, HasTheLimitsThatAreSet) {
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_CORE, &before), 0);
  const rlimit none{0, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_CORE, &none), 0);

  const Machine machine = LookAtMachine();

  const auto core = std::ranges::find(machine.limits, "CORE", &ProcessLimit::name);
  ASSERT_NE(core, machine.limits.end());
  EXPECT_EQ(core->soft, 0U);
  EXPECT_EQ(core->hard.has_value(), before.rlim_max != RLIM_INFINITY);
  ::setrlimit(RLIMIT_CORE, &before);
}

TEST(Machine, HasEachLimitUnderItsOwnName) {
  constexpr std::pair<decltype(RLIMIT_AS), const char*> kNames[] = {
      {RLIMIT_AS, "AS"},       {RLIMIT_CORE, "CORE"},       {RLIMIT_CPU, "CPU"},       {RLIMIT_DATA, "DATA"},
      {RLIMIT_FSIZE, "FSIZE"}, {RLIMIT_MEMLOCK, "MEMLOCK"}, {RLIMIT_NOFILE, "NOFILE"}, {RLIMIT_NPROC, "NPROC"},
      {RLIMIT_RSS, "RSS"},     {RLIMIT_STACK, "STACK"}};
  for (const auto& [resource, name] : kNames) {
    // Another number than before, where there may be another.
    const auto lookAround = [&resource = resource]() -> Answer {
      rlimit limit{};
      ::getrlimit(resource, &limit);
      const rlim_t most = limit.rlim_max == RLIM_INFINITY ? rlim_t{3} << 45 : limit.rlim_max;
      limit.rlim_cur = limit.rlim_max = most > 0 ? most - 1 : 0;
      ::setrlimit(resource, &limit);
      Answer found{std::to_string(limit.rlim_cur)};
      for (const ProcessLimit& one : LookAtMachine().limits) {
        if (one.soft == limit.rlim_cur && one.hard == limit.rlim_cur) {
          found.push_back(one.name);
        }
      }
      return found;
    };
    const Answer found = RunInChild(lookAround, std::chrono::seconds(60)).answer;

    ASSERT_FALSE(found.empty()) << name;
    EXPECT_NE(std::ranges::find(found, name), found.end()) << name << " is " << found[0];
  }
}

TEST(Machine, ItsLocaleIsThatOfTheVariableThatDecides) {
  tests::ScopedEnvironment environment({{"LC_ALL", ""}, {"LC_CTYPE", "de_DE.UTF-8"}, {"LANG", "C"}});

  EXPECT_EQ(LookAtMachine().locale, "LC_CTYPE=de_DE.UTF-8");
  environment.Set("LC_CTYPE", "");
  EXPECT_EQ(LookAtMachine().locale, "LANG=C");
  environment.Set("LANG", "");
  EXPECT_EQ(LookAtMachine().locale, "");
}

}  // namespace
}  // namespace doctor
