#include "tests/support/launcher.h"

#include <csignal>
#include <string_view>

namespace tests {

std::filesystem::path LauncherFile() {
  return LAUNCHER_FILE;
}

Command Launcher() {
  return Command(LauncherFile());
}

Command Launcher(const StandInHost& host) {
  return Launcher().Variables(host.Environment());
}

testing::AssertionResult EndedSilently(const Outcome& outcome, int status) {
  if (outcome.status == status && outcome.out.empty() && outcome.err.empty()) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure() << "not a silent exit with " << status << ": " << outcome;
}

testing::AssertionResult AbortedSaying(const Outcome& outcome, const std::string& line) {
  const std::string_view err = outcome.err;
  const std::string first = line + "\n";
  if (outcome.signal == SIGABRT && outcome.out.empty() && err.starts_with(first)) {
    const std::string_view rest = err.substr(first.size());
    if (rest.empty() || rest.starts_with("terminate called")) {
      return testing::AssertionSuccess();
    }
  }
  return testing::AssertionFailure() << "not an abort after [" << line << "]: " << outcome;
}

}  // namespace tests
