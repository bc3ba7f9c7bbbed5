#include "doctor/options.h"

#include <gtest/gtest.h>

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
  EXPECT_EQ(options.log, std::nullopt);
  EXPECT_EQ(options.settings, std::nullopt);
  EXPECT_EQ(options.root, std::nullopt);
}

TEST(DoctorOptions, EachIsTaken) {
  EXPECT_TRUE(std::get<Options>(Parse({"--json"})).json);
  EXPECT_TRUE(std::get<Options>(Parse({"--verbose"})).verbose);
  EXPECT_FALSE(std::get<Options>(Parse({"--no-probe"})).probe);
  EXPECT_EQ(std::get<Options>(Parse({"--log", "a.log"})).log, "a.log");
  EXPECT_EQ(std::get<Options>(Parse({"--settings=/a b"})).settings, "/a b");
  EXPECT_EQ(std::get<Options>(Parse({"--root", "/r"})).root, "/r");
  EXPECT_EQ(std::get<Options>(Parse({"--color", "always"})).color, Color::kAlways);
  EXPECT_EQ(std::get<Options>(Parse({"--color=never"})).color, Color::kNever);
  EXPECT_EQ(std::get<Options>(Parse({"--color=auto"})).color, Color::kAuto);
}

TEST(DoctorOptions, WrongUsageIsRefusedWithAReason) {
  const std::vector<std::vector<const char*>> rows = {{"--what"},
                                                      {"file"},
                                                      {"--log"},
                                                      {"--settings"},
                                                      {"--color", "green"},
                                                      {"--no-probe", "--log", "a.log"},
                                                      {"--json=maybe"},
                                                      {"--root", ""},
                                                      {"--root", "/\xff"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.front());
    const auto answer = Parse(row);

    ASSERT_TRUE(std::holds_alternative<Refusal>(answer));
    EXPECT_TRUE(std::get<Refusal>(answer).is_error);
    EXPECT_NE(std::get<Refusal>(answer).text, "");
  }
}

TEST(DoctorOptions, HelpNamesEveryOptionAndFitsThePage) {
  const auto answer = Parse({"--help"});

  const auto& help = std::get<Refusal>(answer);
  EXPECT_FALSE(help.is_error);
  for (const char* name : {"--json", "--log FILE", "--settings FILE", "--root DIR", "--no-probe", "--color WHEN",
                           "--version", "--help", "Exit status: 0 "}) {
    EXPECT_NE(help.text.find(name), std::string::npos) << name << " in:\n" << help.text;
  }
}

TEST(DoctorOptions, VersionIsTheProjects) {
  const auto answer = Parse({"--version"});

  EXPECT_EQ(std::get<Refusal>(answer).text, std::string("grellin_doctor ") + kVersion + "\n");
  EXPECT_FALSE(std::get<Refusal>(answer).is_error);
}

}  // namespace
}  // namespace doctor
