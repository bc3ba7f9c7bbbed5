// The doctor from outside: statuses, streams, colours, and that it leaves everything as it was.
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/doctor/installation.h"
#include "tests/support/doctor.h"
#include "tests/support/settings_file.h"
#include "tests/support/temp_folder.h"

namespace tests {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

// Runs the doctor through a shell: "$0" is its path.
Command Shell(const std::string& script) {
  return Command("/bin/sh").Arguments({"-c", script, DoctorFile()}).Variable("PATH", "/usr/sbin:/usr/bin:/sbin:/bin");
}

bool HasColors(const std::string& text) {
  return text.find('\033') != std::string::npos;
}

// A command on a terminal of its own.
class TerminalRun {
 public:
  TerminalRun(const std::vector<std::string>& command, const std::vector<std::string>& environment) {
    const auto argv = Pointers(command);
    const auto envp = Pointers(environment);
    process_ = ::forkpty(&terminal_, nullptr, nullptr, nullptr);
    if (process_ == 0) {
      ::execve(argv.front(), argv.data(), envp.data());
      ::_exit(127);
    }
  }
  TerminalRun(const TerminalRun&) = delete;
  TerminalRun& operator=(const TerminalRun&) = delete;
  ~TerminalRun() {
    ::close(terminal_);
    ::waitpid(process_, nullptr, 0);
  }

  // All that it writes until it ends.
  [[nodiscard]] std::string Text() const {
    std::string text;
    char buffer[4096];
    for (ssize_t got; (got = ::read(terminal_, buffer, sizeof buffer)) > 0;) {
      text.append(buffer, static_cast<std::size_t>(got));
    }
    return text;
  }

 private:
  static std::vector<char*> Pointers(const std::vector<std::string>& texts) {
    std::vector<char*> all;
    for (const std::string& text : texts) {
      all.push_back(const_cast<char*>(text.c_str()));
    }
    all.push_back(nullptr);
    return all;
  }

  pid_t process_ = -1;
  int terminal_ = -1;
};

std::string OnTerminal(const std::vector<std::string>& command, const std::vector<std::string>& environment) {
  return TerminalRun(command, environment).Text();
}

// Everything below the folders, with what a change would change.
std::string Listing(const std::vector<fs::path>& folders) {
  std::ostringstream listing;
  for (const fs::path& folder : folders) {
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      struct stat status {};
      ::lstat(entry.path().c_str(), &status);
      listing << entry.path() << ' ' << status.st_mode << ' ' << status.st_size << ' ' << status.st_mtim.tv_sec << '.'
              << status.st_mtim.tv_nsec << ' ' << status.st_ctim.tv_sec << '.' << status.st_ctim.tv_nsec << '\n';
    }
  }
  return listing.str();
}

TEST(DoctorExecutable, EndsWithZeroWhenALaunchWouldRunEvenWithWarnings) {
  Installation installation;
  installation.Healthy();
  EXPECT_EQ(Doctor().Run().status, 0);

  installation.Settings("Other=1\nOther=2\nDotnetRootFolder=/opt/morvath/dotnet\n");
  const Outcome warned = Doctor().Run();

  EXPECT_EQ(warned.status, 0) << warned;
  EXPECT_NE(warned.out.find("[key-given-twice]"), std::string::npos);
}

TEST(DoctorExecutable, EndsWithOneWhenALaunchWouldNotRun) {
  const Installation installation;

  const Outcome outcome = Doctor().Run();

  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(outcome.out.starts_with("A launch would abort: the folder of the settings file is missing.\n"))
      << outcome;
  EXPECT_EQ(outcome.err, "");
}

TEST(DoctorExecutable, SaysThatTheLauncherIsMissingWhereTheProductIsInstalledWithoutIt) {
  const Installation installation;
  const fs::path bin = "/opt/morvath/quor/bin";
  fs::create_directories(bin);
  fs::copy(DoctorFile(), bin / "grellin_doctor");

  const Outcome without = Command(bin / "grellin_doctor").Arguments({"--no-probe"}).Run();
  fs::copy(DoctorFile(), bin / "grellin_loader");
  const Outcome with = Command(bin / "grellin_doctor").Arguments({"--no-probe"}).Run();
  fs::remove_all(bin);

  EXPECT_TRUE(without.out.starts_with("A launch would not begin: the launcher is missing.\n")) << without;
  EXPECT_EQ(without.status, 1);
  EXPECT_FALSE(with.out.starts_with("A launch would not begin")) << with;
}

TEST(DoctorExecutable, EndsWithTwoAndAReasonWhenUsedWrongly) {
  const Installation installation;

  const Outcome outcome = Doctor({"--what"}).Run();

  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_NE(outcome.err.find("--what"), std::string::npos) << outcome;
}

TEST(DoctorExecutable, EndsWithThreeWhenNobodyTakesWhatItWrites) {
  Installation installation;
  installation.Healthy();
  for (const char* arguments : {"", "--json", "--help", "--version"}) {
    SCOPED_TRACE(arguments);
    for (const char* output : {" >/dev/full", " >&-"}) {
      const Outcome outcome = Shell(std::string("exec \"$0\" ") + arguments + output).Run();

      EXPECT_EQ(outcome.status, 3) << outcome;
      EXPECT_EQ(outcome.err, "grellin_doctor: the report cannot be written\n");
    }
  }
}

TEST(DoctorExecutable, EndsWithThreeWhenAFileMayNotGrowForWhatItWrites) {
  Installation installation;
  installation.Healthy();

  const Outcome outcome = Shell("ulimit -f 0; exec \"$0\" --version >/opt/morvath/report").Run();

  EXPECT_EQ(outcome.status, 3) << outcome;
  EXPECT_EQ(outcome.signal, 0);
}

TEST(DoctorExecutable, EndsWithThreeWhenTheLogCannotBeWritten) {
  Installation installation;
  installation.Healthy();

  const Outcome outcome = Doctor({"--log", "/proc/nothing/walk.log"}).Run();

  EXPECT_EQ(outcome.status, 3) << outcome;
  EXPECT_EQ(outcome.err,
            "grellin_doctor: the log cannot be written to /proc/nothing/walk.log: No such file or directory\n");
  EXPECT_TRUE(outcome.out.starts_with("A launch would run the application.")) << outcome;
}

TEST(DoctorExecutable, EndsWithThreeWhenItCanHaveNoProcess) {
  if (IsSanitized()) {
    GTEST_SKIP() << "a sanitizer's checks are processes of their own";
  }
  Installation installation;
  installation.Healthy();
  fs::copy_file(DoctorFile(), "/opt/morvath/doctor");

  const Outcome outcome = Shell("exec <&-; ulimit -n 4; exec /opt/morvath/doctor").Run();

  EXPECT_EQ(outcome.status, 3) << outcome;
  EXPECT_NE(outcome.err.find("it cannot work"), std::string::npos) << outcome;
}

TEST(DoctorExecutable, HelpAndVersionGoToStandardOutput) {
  const Installation installation;

  const Outcome help = Doctor({"--help"}).Run();
  const Outcome version = Doctor({"--version"}).Run();

  EXPECT_EQ(help.status, 0);
  EXPECT_EQ(version.status, 0);
  EXPECT_NE(help.out.find("--no-probe"), std::string::npos);
  EXPECT_TRUE(version.out.starts_with("grellin_doctor ")) << version;
  EXPECT_EQ(help.err + version.err, "");
}

TEST(DoctorExecutable, ColoursAreForTerminalsUnlessAskedForOrRefused) {
  Installation installation;
  installation.Healthy();
  struct Row {
    const char* name;
    std::vector<std::string> arguments, environment;
    bool on_terminal, in_pipe;
  };
  const Row rows[] = {
      {"nothing asked for", {}, {}, true, false},
      {"NO_COLOR", {}, {"NO_COLOR=1"}, false, false},
      {"an empty NO_COLOR", {}, {"NO_COLOR="}, true, false},
      {"always", {"--color=always"}, {"NO_COLOR=1"}, true, true},
      {"never", {"--color=never"}, {}, false, false},
      {"auto", {"--color", "auto"}, {}, true, false},
      {"JSON has none", {"--json", "--color=always"}, {}, false, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    Command piped = Doctor(row.arguments);
    for (const std::string& variable : row.environment) {
      piped.Variable(variable.substr(0, variable.find('=')), variable.substr(variable.find('=') + 1));
    }

    std::vector<std::string> command{DoctorFile()};
    command.insert(command.end(), row.arguments.begin(), row.arguments.end());
    EXPECT_EQ(HasColors(OnTerminal(command, row.environment)), row.on_terminal);
    EXPECT_EQ(HasColors(piped.Run().out), row.in_pipe);
  }
}

TEST(DoctorExecutable, AFileGetsNoColoursThoughInputAndErrorsAreATerminal) {
  Installation installation;
  installation.Healthy();
  const TempFolder folder;
  const std::string report = folder.Path() / "report";

  static_cast<void>(OnTerminal({"/bin/sh", "-c", "exec \"$0\" >\"$1\"", DoctorFile(), report}, {}));

  EXPECT_NE(ReadFile(report).find("6.0.36"), std::string::npos);
  EXPECT_FALSE(HasColors(ReadFile(report)));
}

TEST(DoctorExecutable, JsonIsOneObject) {
  Installation installation;
  installation.Healthy();

  const json report = json::parse(Doctor({"--json"}).Run().out);

  EXPECT_EQ(report["schema"], 2);
  EXPECT_EQ(report["verdict"]["outcome"], "runs");
  EXPECT_EQ(report["runtime"]["decisive_version"], "6.0.36");
  EXPECT_EQ(report["application"]["context"]["created"], true);
}

TEST(DoctorExecutable, OtherSettingsAndAnotherRootCanBeAskedAbout) {
  Installation installation;
  installation.Healthy();
  const TempFolder folder;
  WriteFile(folder / "other.ini", "DotnetRootFolder=/nothing/there\n");

  EXPECT_EQ(Doctor({"--settings", folder / "other.ini"}).Run().status, 1);
  EXPECT_EQ(Doctor({"--settings", "other.ini"}).Folder(folder.Path()).Run().status, 1);
  EXPECT_EQ(Doctor({"--root", "/nothing/there"}).Run().status, 1);
  EXPECT_EQ(Doctor({"--settings", folder / "other.ini", "--root", std::string(kRoot)}).Run().status, 0);
  EXPECT_EQ(Doctor().Run().status, 0);
}

TEST(DoctorExecutable, TheLogOfTheWalkIsWrittenWhereItIsAskedFor) {
  Installation installation;
  installation.Healthy();
  const TempFolder folder;

  const Outcome outcome = Doctor({"--log", "walk.log"}).Folder(folder.Path()).Run();
  const Outcome other = Doctor({"--log", folder / "other.log", "--root", "/nothing/there"}).Run();

  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_EQ(outcome.err, "grellin_doctor: the loader's log is in " + (folder / "walk.log").string() + "\n");
  EXPECT_NE(ReadFile(folder / "walk.log").find("6.0.36"), std::string::npos);
  EXPECT_EQ(other.status, 1) << other;
  EXPECT_NE(ReadFile(folder / "other.log").find("/nothing/there"), std::string::npos);
}

TEST(DoctorExecutable, WritesAllThatSupportAsksForToANewFile) {
  Installation installation;
  installation.Healthy();
  const TempFolder folder;

  const Outcome outcome = Doctor({"--report", "report"}).Folder(folder.Path()).Run();
  const Outcome again = Doctor({"--report", "report", "--no-probe"}).Folder(folder.Path()).Run();

  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_EQ(outcome.err, "grellin_doctor: the report for support is in report\n");
  EXPECT_TRUE(outcome.out.starts_with("A launch would run the application.\n")) << outcome;
  const std::string report = ReadFile(folder / "report");
  for (const char* part : {"A launch would run the application.\n", "\nMachine\n", "\n==== The loader's log ====\n20",
                           "libhostfxr.so", "\n  \"verdict\": {"}) {
    EXPECT_NE(report.find(part), std::string::npos) << part << " in:\n" << report;
  }
  EXPECT_EQ(again.status, 3) << again;
  EXPECT_EQ(again.err,
            "grellin_doctor: the report cannot be written to report: there is such a file already, and it is "
            "left alone\n");
  EXPECT_EQ(ReadFile(folder / "report"), report);
}

TEST(DoctorExecutable, TheReportForSupportSaysWhyItHasNoLog) {
  const TempFolder folder;

  const Outcome outcome = Doctor({"--report", "report", "--no-probe"}).Folder(folder.Path()).Run();

  EXPECT_EQ(outcome.err, "grellin_doctor: the report for support is in report\n");
  EXPECT_NE(
      ReadFile(folder / "report").find("\n==== The loader's log ====\nNot written, as nothing was to be loaded.\n"),
      std::string::npos);
}

TEST(DoctorExecutable, ChangesNothingOnTheMachine) {
  Installation installation;
  installation.Healthy().OddHost("6.0.40", "comes_BusError").HostOfBytes("6.0.41", CutLibrary());
  const TempFolder home;
  const std::vector<fs::path> folders{"/opt/morvath", "/var/opt/morvath", home.Path()};
  const std::string before = Listing(folders);

  for (const char* form : {"--json", "--no-probe", "--color=always"}) {
    const Outcome outcome =
        Doctor({form}).Variable("HOME", home.Path()).Variable("TMP", home.Path()).Folder(home.Path()).Run();
    EXPECT_NE(outcome.out.find("6.0.40"), std::string::npos) << form << outcome;  // It has looked.
  }

  EXPECT_EQ(Listing(folders), before);
}

TEST(DoctorExecutable, ALibraryThatALaunchWouldNotLoadIsNotLoaded) {
  Installation installation;
  installation.Healthy().OddHost("6.0.1", "comes_LeaveFile").OddHost("6.0.40", "comes_Crash");
  const TempFolder folder;

  static_cast<void>(Doctor().Folder(folder.Path()).Run());
  EXPECT_TRUE(fs::is_empty(folder.Path())) << "one that ends a launch comes first";
  installation.Remove(Installation::HostFile("6.0.40").parent_path());
  static_cast<void>(Doctor().Folder(folder.Path()).Run());
  EXPECT_TRUE(fs::is_empty(folder.Path())) << "one that is chosen comes first";
  installation.Remove(Installation::HostFile("6.0.36").parent_path());
  static_cast<void>(Doctor().Folder(folder.Path()).Run());
  EXPECT_FALSE(fs::is_empty(folder.Path())) << "it is the first";
}

TEST(DoctorExecutable, ACrashWhileLoadingIsAFindingNotItsEnd) {
  Installation installation;
  installation.Healthy().OddHost("6.0.40", "comes_Crash");

  const Outcome outcome = Doctor().Run();

  EXPECT_EQ(outcome.status, 1) << outcome;
  EXPECT_EQ(outcome.signal, 0);
  EXPECT_TRUE(outcome.out.starts_with("A launch would die of SIGSEGV: ")) << outcome;
  EXPECT_NE(outcome.out.find("6.0.40/libhostfxr.so"), std::string::npos);
}

TEST(DoctorExecutable, WhatDoesNotFinishWithinTheTimeLimitIsNotKnown) {
  struct Row {
    const char* host;
    std::string_view opening;
  };
  const Row rows[] = {
      {"comes_Hang",
       "Not known: loading /opt/morvath/dotnet/host/fxr/6.0.36/libhostfxr.so did not finish within 0.5 s."},
      {"prepares_Hang", "Not known: the host did not prepare the application within 0.5 s."},
  };
  for (const auto& [host, opening] : rows) {
    Installation installation;
    installation.Healthy().OddHost("6.0.36", host);

    const Outcome outcome = Doctor({"--time-limit", "0.5"}).Run();

    EXPECT_EQ(outcome.status, 3) << outcome;
    EXPECT_TRUE(outcome.out.starts_with(std::string(opening) + "\n  A slow disk can be the reason.\n"
                                                               "  To wait longer:  grellin_doctor --time-limit 3\n"))
        << outcome;
    EXPECT_EQ(outcome.out.find(" hang"), std::string::npos) << outcome;
    EXPECT_EQ(outcome.err, "");
  }
}

TEST(DoctorExecutable, OnlyATerminalIsToldWhatIsWaitedFor) {
  Installation installation;
  installation.Healthy().OddHost("6.0.36", "comes_Hang");
  const TempFolder folder;
  const std::string errors = folder.Path() / "errors";
  const auto run = [&](const std::string& streams, const std::vector<std::string>& environment) {
    return TerminalRun({"/bin/sh", "-c", "exec \"$0\" --time-limit 1.5 " + streams, DoctorFile(), errors}, environment);
  };
  const std::string words = "Waiting for /opt/morvath/dotnet/host/fxr/6.0.36/libhostfxr.so to load";

  const TerminalRun able = run(">/dev/null", {"TERM=xterm"});
  const TerminalRun dumb = run(">/dev/null", {"TERM=dumb"});
  const TerminalRun silent = run("2>\"$1\"", {"TERM=xterm"});
  const std::string erased = able.Text();
  const std::string plain = dumb.Text();
  const std::string none = silent.Text();

  EXPECT_NE(erased.find(words), std::string::npos) << erased;
  EXPECT_TRUE(erased.ends_with("\r" + std::string(79, ' ') + "\r")) << erased;
  EXPECT_EQ(plain, words + ", 1.5 s at most\r\n");
  EXPECT_EQ(none.find("Waiting"), std::string::npos) << none;
  EXPECT_EQ(ReadFile(errors), "");
}

TEST(DoctorExecutable, AHostThatClosesAllDescriptorsIsHeardAllTheSame) {
  Installation installation;
  installation.Healthy().OddHost("6.0.36", "closes_all");

  const Outcome outcome = Doctor().Run();

  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_TRUE(outcome.out.starts_with("The host accepts the application")) << outcome;
}

TEST(DoctorExecutable, WorksWhereItsParentIgnoresTheEndOfChildren) {
  Installation installation;
  installation.Healthy().OddHost("6.0.40", "comes_Crash");

  const Outcome outcome = Shell("exec env --ignore-signal=CHLD \"$0\"").Variable("ASAN_OPTIONS", "handle_segv=0").Run();

  EXPECT_TRUE(outcome.out.starts_with("A launch would die of SIGSEGV: ")) << outcome;
}

TEST(DoctorExecutable, WorksWithItsInputAndErrorsClosed) {
  Installation installation;
  installation.Healthy();

  const Outcome outcome = Shell("exec \"$0\" <&- 2>&-").Run();

  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_NE(outcome.out.find("6.0.36"), std::string::npos) << outcome;
}

TEST(DoctorExecutable, WorksWithoutProc) {
  if (IsSanitized()) {
    GTEST_SKIP() << "a sanitizer does not start without /proc";
  }
  Installation installation;
  installation.Healthy();

  const Outcome outcome = Shell("exec unshare --mount sh -c 'mount -t tmpfs none /proc && exec \"$0\"' \"$0\"").Run();

  EXPECT_EQ(outcome.status, 1) << outcome;
  EXPECT_TRUE(outcome.out.starts_with("A launch would abort: the folder of the executable cannot be determined.\n"))
      << outcome;
}

TEST(DoctorExecutable, AProcessThatCannotBeStartedEndsTheDiagnosis) {
  if (IsSanitized()) {
    GTEST_SKIP() << "a sanitizer starts processes of its own";
  }
  if (const std::string why = WhyCallsCannotBeWatched(); !why.empty()) {
    GTEST_SKIP() << why;
  }
  Installation installation;
  installation.Healthy();
  std::string said;

  int seen = 0;
  for (int number = 1; seen >= number - 1; ++number) {
    seen = 0;
    const Outcome outcome = Doctor()
                                .Watched([&](const WatchedCall& call) {
                                  const bool fails = call.Name().starts_with("clone") && ++seen == number;
                                  return fails ? Decision::Fail(EAGAIN) : Decision::Make();
                                })
                                .Run();
    EXPECT_EQ(outcome.status, outcome.err.empty() ? 0 : 3) << number << ", " << outcome;
    said += outcome.err;
  }

  for (const char* what : {"load libraries", "create the context", "start the runtime"}) {
    EXPECT_NE(said.find(std::string("a process to ") + what + " in: Resource temporarily unavailable\n"),
              std::string::npos)
        << what << " in " << said;
  }
}

TEST(DoctorExecutable, ExplainsACodeWithoutLookingAtAnything) {
  const Outcome known = Doctor({"--explain", "cut-short"}).Run();
  const Outcome unknown = Doctor({"--explain", "cut-shrot\033"}).Run();
  const Outcome list = Doctor({"--explain", "list"}).Run();

  EXPECT_EQ(known.status, 0) << known;
  EXPECT_TRUE(known.out.starts_with("cut-short\n")) << known;
  EXPECT_EQ(unknown.status, 2) << unknown;
  EXPECT_TRUE(
      unknown.err.starts_with("grellin_doctor: there is no finding 'cut-shrot\\x1b'; the nearest ones are cut-short"))
      << unknown;
  EXPECT_TRUE(unknown.err.ends_with("; all:  grellin_doctor --explain list\n")) << unknown;
  EXPECT_NE(list.out.find("\ncut-short\n"), std::string::npos) << list;
}

// Whether there is another user to be in this namespace.
bool MayBecomeNobody() {
  return Command("/usr/bin/setpriv")
             .Arguments({"--reuid=65534", "true"})
             .Variable("PATH", "/usr/bin:/bin")
             .Run()
             .status == 0;
}

TEST(DoctorExecutable, AsksAsAnotherUser) {
  if (!MayBecomeNobody()) {
    GTEST_SKIP() << "there is no other user to be in this namespace";
  }
  Installation installation;
  installation.Healthy();
  fs::permissions(kSettingsPath, fs::perms::owner_read);

  const Outcome root = Doctor().Run();
  const Outcome other = Doctor({"--user", "nobody", "--json"}).Variable("HOME", "/root").Run();

  EXPECT_EQ(root.status, 0) << root;
  EXPECT_NE(root.out.find("--user NAME"), std::string::npos) << root;
  EXPECT_EQ(other.status, 1) << other;
  const json report = json::parse(other.out);
  EXPECT_EQ(report["verdict"]["code"], "settings-unreadable") << other;
  EXPECT_EQ(report["machine"]["user"], "nobody") << other;
  EXPECT_EQ(report["machine"]["groups"].size(), 1U) << other;
}

TEST(DoctorExecutable, AsksAsAnotherUserForRootOnlyAndOnlyAsOneThatIsThere) {
  if (!MayBecomeNobody()) {
    GTEST_SKIP() << "there is no other user to be in this namespace";
  }
  const Installation installation;
  fs::copy_file(DoctorFile(), "/opt/morvath/doctor");

  // Whoever keeps counts makes files for them, which other users may only write.
  const Outcome unknown = Doctor({"--user", "no such user"}).Run();
  const Outcome refused =
      Shell("exec setpriv --reuid=65534 --regid=65534 --clear-groups /opt/morvath/doctor --user root").Run();

  EXPECT_EQ(refused.status, 2) << refused;
  EXPECT_EQ(refused.err, "grellin_doctor: --user is for root\n");
  EXPECT_EQ(unknown.status, 2) << unknown;
  EXPECT_EQ(unknown.err, "grellin_doctor: there is no user 'no such user'\n");
}

TEST(DoctorExecutable, WorksForAnyUser) {
  if (!MayBecomeNobody()) {
    GTEST_SKIP() << "there is no other user to be in this namespace";
  }
  Installation installation;
  installation.Healthy();
  fs::copy_file(DoctorFile(), "/opt/morvath/doctor");
  const std::string script = "exec setpriv --reuid=65534 --regid=65534 --clear-groups /opt/morvath/doctor";

  const Outcome allowed = Shell(script).Run();
  fs::permissions(kSettingsPath, fs::perms::owner_read);
  const Outcome refused = Shell(script).Run();

  EXPECT_EQ(allowed.status, 0) << allowed;
  EXPECT_EQ(refused.status, 1) << refused;
  EXPECT_NE(refused.out.find("chmod o+r "), std::string::npos) << refused;
}

}  // namespace
}  // namespace tests
