#include "doctor/examine/machine.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <regex>

#include "tests/support/scoped_environment.h"

namespace doctor {
namespace {

TEST(Machine, HasTheUserThatThisProcessRunsAs) {
  const Machine machine = LookAtMachine();

  EXPECT_EQ(machine.user_id, ::geteuid());
  EXPECT_EQ(machine.group_id, ::getegid());
  EXPECT_FALSE(machine.groups.empty());
}

TEST(Machine, HasANameAKernelAndACLibrary) {
  const Machine machine = LookAtMachine();

  EXPECT_NE(machine.host, "");
  EXPECT_TRUE(machine.kernel.starts_with("Linux ")) << machine.kernel;
  EXPECT_TRUE(machine.c_library.starts_with("glibc 2.")) << machine.c_library;
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
