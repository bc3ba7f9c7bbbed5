// A managed program, run by the launcher on a real .NET: what reaches it, and what comes from it.
#include <string>

#include "tests/real/installed_product.h"
#include "tests/support/launcher.h"

namespace tests {
namespace {

using LaunchOnRealDotnet = RealDotnet;

std::string FirstLines(const std::string& text, int count) {
  std::size_t end = 0;
  while (count-- > 0) {
    end = text.find('\n', end) + 1;
  }
  return text.substr(0, end);
}

TEST_F(LaunchOnRealDotnet, ArgumentsArriveUnchanged) {
  const InstalledProduct product(prepared_);

  const Outcome outcome =
      product.Start({"show", "two words", "", " ", "😀 naïve", "-v", "--", "--roll-forward", "\"a\\b\"", "new\nline"})
          .Run();

  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_EQ(FirstLines(outcome.out, 11),
            "[0] \"show\"\n"
            "[1] \"two words\"\n"
            "[2] \"\"\n"
            "[3] \" \"\n"
            "[4] \"😀 naïve\"\n"
            "[5] \"-v\"\n"
            "[6] \"--\"\n"
            "[7] \"--roll-forward\"\n"
            "[8] \"\\\"a\\\\b\\\"\"\n"
            "[9] \"new\\nline\"\n" +
                FirstLines(outcome.out.substr(outcome.out.find("runtime ")), 1));
}

TEST_F(LaunchOnRealDotnet, FirstArgumentMayLookLikeAnOptionOfTheHost) {
  const InstalledProduct product(prepared_);

  for (const char* argument : {"--info", "--fx-version", "exec", "--depsfile", "x.dll"}) {
    const Outcome outcome = product.Start({argument}).Run();

    EXPECT_EQ(FirstLines(outcome.out, 1), "[0] \"" + std::string(argument) + "\"\n") << outcome;
  }
}

TEST_F(LaunchOnRealDotnet, NoArgumentsAreNoArguments) {
  const InstalledProduct product(prepared_);

  const Outcome outcome = product.Start({}).Run();

  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_TRUE(outcome.out.starts_with("runtime ")) << outcome;
}

TEST_F(LaunchOnRealDotnet, ProgramRunsFromTheProductFolderOnTheRootOfTheSettings) {
  const InstalledProduct product(prepared_);

  const Outcome outcome = product.Start({"show"}).Run();

  EXPECT_TRUE(RanOn(prepared_.HostFile(), outcome));
  EXPECT_NE(outcome.out.find("\nfolder \"/opt/morvath/quor/lib64/\"\n"), std::string::npos) << outcome;
  EXPECT_EQ(outcome.err, "");
}

TEST_F(LaunchOnRealDotnet, InputIsCopiedToOutputByteByByte) {
  const InstalledProduct product(prepared_);
  std::string bytes;
  for (int i = 0; i < 300'000; ++i) {
    bytes += static_cast<char>((i * 7 + i / 256) % 256);
  }

  const Outcome outcome = product.Start({"copy"}).Input(bytes).Run();

  EXPECT_EQ(outcome.status, 0);
  EXPECT_TRUE(outcome.out == bytes) << outcome.out.size() << " bytes of " << bytes.size();
}

TEST_F(LaunchOnRealDotnet, ThreadsAndGarbageCollectionWork) {
  const InstalledProduct product(prepared_);

  const Outcome outcome = product.Start({"work"}).Run();

  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out,
            "4478 primes below 200000 end in 1\n"
            "1 primes below 200000 end in 2\n"
            "4517 primes below 200000 end in 3\n"
            "1 primes below 200000 end in 5\n"
            "4503 primes below 200000 end in 7\n"
            "4484 primes below 200000 end in 9\n"
            "4 threads, garbage collected meanwhile\n");
}

TEST_F(LaunchOnRealDotnet, TerminationSignalReachesTheProgram) {
  const InstalledProduct product(prepared_);
  const std::string script =
      R"({ timeout -s KILL 20 "$0" wait; echo "status $?"; } | { read -r line; kill -TERM "${line##* }"; cat; })";

  const Outcome outcome = Command("/bin/sh").Arguments({"-c", script, LauncherFile()}).Run();

  EXPECT_EQ(outcome.out, "received SIGTERM\nending\nstatus 0\n") << outcome;
}

}  // namespace
}  // namespace tests
