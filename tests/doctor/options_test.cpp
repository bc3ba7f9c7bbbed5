#include "doctor/options.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "doctor/version.h"

namespace doctor {
namespace {

using Answer = std::variant<Options, Refusal>;

Answer Parse(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "grellin_doctor");
  return ParseOptions(static_cast<int>(arguments.size()), arguments.data());
}

TEST(DoctorOptions, NothingAskedMeansTextOfTheInstalledProduct) {
  const auto answer = Parse({});

  const auto& options = std::get<Options>(answer);
  EXPECT_FALSE(options.json);
  EXPECT_FALSE(options.verbose);
  EXPECT_TRUE(options.probe);
  EXPECT_EQ(options.color, Color::kAuto);
  EXPECT_EQ(options.time_limit, std::chrono::seconds(10));
  EXPECT_EQ(options.log, std::nullopt);
  EXPECT_EQ(options.settings, std::nullopt);
  EXPECT_EQ(options.root, std::nullopt);
}

TEST(DoctorOptions, EachIsTaken) {
  EXPECT_TRUE(std::get<Options>(Parse({"--json"})).json);
  EXPECT_TRUE(std::get<Options>(Parse({"--verbose"})).verbose);
  EXPECT_FALSE(std::get<Options>(Parse({"--no-probe"})).probe);
  EXPECT_EQ(std::get<Options>(Parse({"--log", "a.log"})).log, "a.log");
  EXPECT_EQ(std::get<Options>(Parse({"--report", "r"})).report, "r");
  EXPECT_EQ(std::get<Options>(Parse({"--settings=/a b"})).settings, "/a b");
  EXPECT_EQ(std::get<Options>(Parse({"--root", "/r"})).root, "/r");
  EXPECT_EQ(std::get<Options>(Parse({"--user", "quor"})).user, "quor");
  EXPECT_EQ(std::get<Options>(Parse({"--explain", "noexec"})).explain, "noexec");
  EXPECT_EQ(std::get<Options>(Parse({"--color", "always"})).color, Color::kAlways);
  EXPECT_EQ(std::get<Options>(Parse({"--color=never"})).color, Color::kNever);
  EXPECT_EQ(std::get<Options>(Parse({"--color=auto"})).color, Color::kAuto);
}

TEST(DoctorOptions, TheTimeLimitIsInWholeOrFractionalSeconds) {
  struct Row {
    const char* seconds;
    std::int64_t milliseconds;
  };
  const Row rows[] = {{"1", 1000},
                      {"60", 60'000},
                      {"0.5", 500},
                      {".25", 250},
                      {"2.", 2000},
                      {"0.001", 1},
                      {"1.2345", 1234},
                      {"100000", 100'000'000},
                      {"999999999", 999'999'999'000}};
  for (const auto& [seconds, milliseconds] : rows) {
    EXPECT_EQ(std::get<Options>(Parse({"--time-limit", seconds})).time_limit, std::chrono::milliseconds(milliseconds))
        << seconds;
  }
  for (const char* other : {"0", "0.0001", "-1", "1e3", "inf", "nan", "0x10", "1,5", "1.2.3", ".", "", "10 s", "ten",
                            "1000000000", "10000000000000000000"}) {
    EXPECT_TRUE(std::holds_alternative<Refusal>(Parse({"--time-limit", other}))) << other;
  }
}

TEST(DoctorOptions, WrongUsageIsRefusedInWordsThatSayWhatIsTaken) {
  struct Row {
    std::vector<const char*> arguments;
    std::string words;
  };
  const std::vector<Row> rows = {
      {{"--what"}, "there is no option --what"},
      {{"--what\033"}, "there is no option --what\\x1b"},
      {{"file"}, "only options are taken, not 'file'"},
      {{"--log"}, "--log takes a file to write to"},
      {{"--report"}, "--report takes a file to write to"},
      {{"--settings"}, "--settings takes a file"},
      {{"--settings", "/a", "--settings", "/b"}, "--settings is given twice"},
      {{"--user"}, "--user takes the name of a user"},
      {{"--explain"}, "--explain takes the code of a finding, or list"},
      {{"--color", "green"}, "--color takes auto, always or never"},
      {{"--color=--root"}, "--color takes auto, always or never"},
      {{"--no-probe", "--log", "a.log"}, "--no-probe loads nothing that --log could be the log of"},
      {{"--json=maybe"}, "--json takes no value"},
      {{"--verbose=2"}, "--verbose takes no value"},
      {{"--no-probe=false"}, "--no-probe takes no value"},
      {{"--version=false"}, "--version takes no value"},
      {{"--help=maybe"}, "--help takes no value"},
      {{"--time-limit"}, "--time-limit takes a number of seconds above 0"},
      {{"--time-limit", "0"}, "--time-limit takes a number of seconds above 0"},
      {{"--root", ""}, "--root takes a path in UTF-8"},
      {{"--root", "/\xff"}, "--root takes a path in UTF-8"},
  };
  for (const auto& [arguments, words] : rows) {
    const auto answer = Parse(arguments);

    ASSERT_TRUE(std::holds_alternative<Refusal>(answer)) << words;
    EXPECT_TRUE(std::get<Refusal>(answer).is_error) << words;
    EXPECT_EQ(std::get<Refusal>(answer).text, "grellin_doctor: " + words + "\nAll options:  grellin_doctor --help\n");
  }
}

TEST(DoctorOptions, HelpSaysWhatEveryOptionDoesAndFitsThePage) {
  const auto answer = Parse({"--help"});

  const auto& help = std::get<Refusal>(answer);
  EXPECT_FALSE(help.is_error);
  constexpr std::pair<const char*, const char*> kOptions[] = {
      {"-h,--help", "Print these words and end"},
      {"--version", "Print the doctor's version and end"},
      {"--json", "Write one JSON object, for machines"},
      {"--verbose", "Show every part in detail, not only where something is wrong"},
      {"--log FILE", "Write the loader's own log of the walk to this file"},
      {"--report FILE", "Write all that support asks for to this new file"},
      {"--settings FILE", "Ask about this settings file instead of the installed one"},
      {"--root DIR", "Ask about this runtime root instead of the one in the settings"},
      {"--time-limit SECONDS", "Wait so long for each child process, 10 seconds unless said"},
      {"--no-probe", "Load nothing; excludes --log"},
      {"--user NAME", "Ask as this user, with its rights; for root"},
      {"--explain CODE", "Say what the code of a finding means, and end; list has all codes"},
      {"--color WHEN", "When to use colours: auto, always or never"},
  };
  for (const auto& [option, words] : kOptions) {
    const auto at = help.text.find("\n  " + std::string(option) + " ");
    ASSERT_NE(at, std::string::npos) << option << help.text;
    const std::string line = help.text.substr(at + 1, help.text.find('\n', at + 1) - at - 1);
    EXPECT_TRUE(line.ends_with(" " + std::string(words))) << line;
  }
  std::istringstream lines(help.text);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_LE(line.size(), 100U) << line;
  }
}

TEST(DoctorOptions, HelpBeginsWithWhatTheDoctorDoesAndEndsWithItsExitStatuses) {
  const auto answer = Parse({"--help"});

  const std::string& help = std::get<Refusal>(answer).text;
  EXPECT_TRUE(help.starts_with(
      "Reports why a launch of the product's managed application fails, or that it does not: where the\n"
      "launcher looks, what it finds, and why it refuses it. Runs nothing of the application and changes\n"
      "nothing.\n"))
      << help;
  EXPECT_TRUE(help.ends_with(
      "\nExit status: 0 a launch would run the application, 1 it would not, 2 wrong usage, 3 not known: the\n"
      "doctor itself could not work, or what it tried did not finish in time. Warnings alone keep 0.\n"))
      << help;
}

TEST(DoctorOptions, VersionIsTheProjects) {
  const auto answer = Parse({"--version"});

  EXPECT_EQ(std::get<Refusal>(answer).text, std::string("grellin_doctor ") + kVersion + "\n");
  EXPECT_FALSE(std::get<Refusal>(answer).is_error);
}

}  // namespace
}  // namespace doctor
