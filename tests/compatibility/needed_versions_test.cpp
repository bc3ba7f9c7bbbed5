// Which versions of the C and C++ libraries the shipped executables ask for: those decide on which systems they start.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/process.h"

namespace tests {
namespace {

using Version = std::vector<int>;

struct Ceiling {
  std::string_view family;
  Version highest;
};

// What the oldest systems have: a C library 2.17 and the C++ library of GCC 4.8.
const auto kCeilings = std::to_array<Ceiling>({
    {"GLIBC", {2, 17}},
    {"GLIBCXX", {3, 4, 19}},
    {"CXXABI", {1, 3, 7}},
    {"GCC", {4, 8, 0}},
});

struct Executable {
  std::string_view name;
  const char* file;

  friend void PrintTo(const Executable& executable, std::ostream* stream) { *stream << executable.name; }
};

class NeededVersions : public testing::TestWithParam<Executable> {
 protected:
  void SetUp() override {
    if (const char* why = WHY_OTHER_VERSIONS; *why != '\0') {
      GTEST_SKIP() << "linked for the building system only: this is " << why;
    }
  }

  static std::string Read(const char* what) {
    const auto outcome = Command(READELF).Arguments({what, GetParam().file}).Run();
    EXPECT_EQ(outcome.status, 0) << outcome;
    return outcome.out;
  }

  // What the first group of `pattern` catches, wherever it is found.
  static std::set<std::string> Caught(const std::string& text, const char* pattern) {
    const std::regex regex(pattern);
    std::set<std::string> names;
    for (std::sregex_iterator match(text.begin(), text.end(), regex); match != std::sregex_iterator(); ++match) {
      names.insert((*match)[1]);
    }
    return names;
  }
};

// "3.4.19" as numbers; nothing for anything else.
std::optional<Version> Numbers(const std::string& text) {
  if (!std::regex_match(text, std::regex(R"(\d+(\.\d+)*)"))) {
    return std::nullopt;
  }
  Version version;
  std::istringstream stream(text);
  for (std::string number; std::getline(stream, number, '.');) {
    version.push_back(std::stoi(number));
  }
  return version;
}

// Empty when every old system has that version.
std::string WhatIsWrongWith(const std::string& name) {
  const std::size_t end = std::min(name.find('_'), name.size());
  const auto* ceiling = std::ranges::find(kCeilings, std::string_view(name).substr(0, end), &Ceiling::family);
  if (ceiling == kCeilings.end()) {
    return "of an unknown family";
  }
  const auto version = Numbers(name.substr(std::min(end + 1, name.size())));
  if (!version) {
    return "not a number";
  }
  return *version <= ceiling->highest ? "" : "too new";
}

TEST_P(NeededVersions, AreThoseThatOldSystemsHave) {
  const auto needed = Caught(Read("--version-info"), R"(Name: (\S+)  Flags: )");

  EXPECT_TRUE(needed.contains("GLIBC_2.2.5")) << "there is no table of versions";
  for (const std::string& name : needed) {
    EXPECT_EQ(WhatIsWrongWith(name), "") << name;
  }
}

// Up to 2.33 dlopen is not in libc.
TEST_P(NeededVersions, BringTheOldLibraryForDynamicLoading) {
  EXPECT_TRUE(Caught(Read("--dynamic"), R"(\(NEEDED\).*\[(.*)\])").contains("libdl.so.2"));
}

INSTANTIATE_TEST_SUITE_P(Of, NeededVersions,
                         testing::Values(Executable{"Launcher", LAUNCHER}, Executable{"Doctor", DOCTOR}),
                         [](const auto& each) { return std::string(each.param.name); });

TEST(VersionRule, RefusesWhatIsNewerAndWhatIsUnknown) {
  for (const char* name :
       {"GLIBC_2.17", "GLIBC_2.2.5", "GLIBCXX_3.4.19", "GLIBCXX_3.4.9", "CXXABI_1.3.7", "GCC_4.8.0"}) {
    EXPECT_EQ(WhatIsWrongWith(name), "") << name;
  }
  for (const char* name : {"GLIBC_2.18", "GLIBC_3.0", "GLIBCXX_3.4.20", "CXXABI_1.3.8", "GCC_7.0.0"}) {
    EXPECT_EQ(WhatIsWrongWith(name), "too new") << name;
  }
  EXPECT_EQ(WhatIsWrongWith("GLIBC_PRIVATE"), "not a number");
  EXPECT_EQ(WhatIsWrongWith("GLIBC_ABI_DT_RELR"), "not a number");
  EXPECT_EQ(WhatIsWrongWith("OPENSSL_3.0"), "of an unknown family");
}

// The doctor's whole dependency: it starts where the server's C++ library is broken, or missing.
TEST(DoctorFile, NeedsNoCxxLibrary) {
  if (const char* why = WHY_OTHER_VERSIONS; *why != '\0') {
    GTEST_SKIP() << "linked for the building system only: this is " << why;
  }
  const auto outcome = Command(READELF).Arguments({"--dynamic", DOCTOR}).Run();

  EXPECT_NE(outcome.out.find("libc.so.6"), std::string::npos) << outcome;
  EXPECT_EQ(outcome.out.find("libstdc++"), std::string::npos) << outcome.out;
}

}  // namespace
}  // namespace tests
