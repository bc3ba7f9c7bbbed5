#include "doctor/report/head.h"

#include <gtest/gtest.h>

#include "doctor/version.h"

namespace doctor {
namespace {

const std::string kProgram = std::string("grellin_doctor ") + kVersion;

Machine Fixed() {
  Machine machine;
  machine.host = "app-01";
  machine.user = "quor";
  machine.user_id = machine.group_id = 1000;
  machine.groups = {"quor", "adm"};
  machine.time = "2026-11-21T16:30:05+01:00";
  machine.system = "Debian 12";
  machine.kernel = "Linux 6.1 x86_64";
  machine.c_library = "glibc 2.36";
  machine.limits = {{"NOFILE", 1024, 4096}, {"STACK", 8192, std::nullopt}, {"CORE", 0, 0}};
  machine.locale = "LANG=C.UTF-8";
  return machine;
}

TEST(Head, IsOneLine) {
  EXPECT_EQ(HeadLine(Fixed()), kProgram + " on app-01 as quor, 2026-11-21 16:30 +01:00, Debian 12, glibc 2.36");
}

TEST(Head, LeavesOutWhatIsNotKnown) {
  Machine machine = Fixed();
  machine.user = machine.system = machine.time = "";

  EXPECT_EQ(HeadLine(machine), kProgram + " on app-01 as uid 1000, glibc 2.36");
  EXPECT_EQ(HeadLine({}), kProgram);
}

TEST(Head, HoldsNothingThatATerminalObeys) {
  Machine machine;
  machine.host = "app\033[2J";

  EXPECT_EQ(HeadLine(machine), kProgram + " on app\\x1b[2J as uid 0");
}

TEST(Head, ItsPartsSayWhatWasAskedAndWhere) {
  using namespace std::chrono_literals;
  Page page(false);

  PutHead(page, {Fixed(), {"/settings", "/root", true, {2500ms}}});

  EXPECT_EQ(page.Text(),
            "\nAsked\n"
            "  settings  /settings\n"
            "  root      /root\n"
            "  loading   tried, each step for at most 2.5 s\n"
            "\nMachine\n"
            "  user    quor, uid 1000, gid 1000\n"
            "  groups  quor, adm\n"
            "  kernel  Linux 6.1 x86_64\n"
            "  limits  NOFILE 1024 of 4096, STACK 8192 of any, CORE 0\n"
            "  locale  LANG=C.UTF-8\n");
}

TEST(Head, SaysWhatWasNotSet) {
  Page page(false);

  PutHead(page, {{}, {"/settings", std::nullopt, false}});

  EXPECT_NE(page.Text().find("  root      the one in the settings\n  loading   not tried\n"), std::string::npos)
      << page.Text();
  EXPECT_NE(page.Text().find("  limits  none\n  locale  not set\n"), std::string::npos) << page.Text();
}

}  // namespace
}  // namespace doctor
