#include "tests/faults/launch_world.h"

#include <csignal>

namespace tests {

namespace {

testing::AssertionResult Answer(bool is, const Outcome& outcome, const std::string& wanted) {
  return (is ? testing::AssertionSuccess() : testing::AssertionFailure()) << "not " << wanted << ": " << outcome;
}

bool Says(const Outcome& outcome, std::string_view line) {
  return ("\n" + outcome.out).find("\n" + std::string(line)) != std::string::npos;
}

}  // namespace

LaunchWorld::LaunchWorld(const std::filesystem::path& parent)
    : runtime_(parent),
      settings_("DotnetRootFolder=" + decoy_.Root().string() + "\n#" + std::string(5'000, ' ') +
                "\nDotnetRootFolder=" + runtime_.Root().string() + "\n") {
  const std::string host = ReadFile(PLAIN_HOST);
  decoy_.AddHostOfBytes("6.0.99", host);
  runtime_.AddHostOfBytes(kOlder, host).AddHostOfBytes(kNewest, host);
}

Command LaunchWorld::Launch() const {
  return Launcher().Arguments({"a", "b"});
}

std::string LaunchWorld::Story(std::string_view version) const {
  const std::string name(version);
  return name + " loaded\nhost " + runtime_.HostFile(version).string() + "\nroot " + runtime_.Root().string() +
         "\nargument /opt/morvath/quor/lib64/grellin_utils.dll\nargument a\nargument b\nrun\nclose\n" + name +
         " unloaded\n";
}

testing::AssertionResult LaunchWorld::Ran(const Outcome& outcome) const {
  const testing::AssertionResult newest = Ran(outcome, kNewest);
  return newest ? newest : Ran(outcome, kOlder);
}

testing::AssertionResult LaunchWorld::Ran(const Outcome& outcome, std::string_view version) const {
  // The newest may have come and gone before.
  const bool hasTold =
      outcome.out == Story(version) ||
      outcome.out == std::string(kNewest) + " loaded\n" + std::string(kNewest) + " unloaded\n" + Story(version);
  return Answer(outcome.status == 0 && outcome.err.empty() && hasTold, outcome,
                "a run of " + std::string(version) + " or an older one");
}

testing::AssertionResult EndedWith255(const Outcome& outcome) {
  const bool wasAsked = Says(outcome, "host ") || Says(outcome, "open descriptor");
  return Answer(outcome.status == 255 && outcome.err.empty() && !wasAsked, outcome, "a silent end with 255");
}

testing::AssertionResult Aborted(const Outcome& outcome, std::string_view words) {
  const bool hasRun = Says(outcome, "run") || Says(outcome, "open descriptor");
  const bool hasSaid = outcome.err.starts_with("Error occurred: " + std::string(words));
  return Answer(outcome.signal == SIGABRT && hasSaid && !hasRun, outcome,
                "an abort that says \"" + std::string(words) + "\"");
}

}  // namespace tests
