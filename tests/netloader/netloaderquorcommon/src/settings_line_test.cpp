#include "netloader/netloaderquorcommon/src/settings_line.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>

namespace netloader::quor::detail {
namespace {

using namespace std::string_view_literals;

TEST(SettingsLine, SetsWhatStandsBeforeTheFirstEqualsSignToAllThatFollows) {
  struct Row {
    std::string_view line;
    std::string_view key;
    std::string_view value;
  };
  for (const auto& [line, key, value] : std::to_array<Row>({
           {"k=v", "k", "v"},
           {"k=", "k", ""},
           {"a=b=c", "a", "b=c"},
           {"k==", "k", "="},
           {"DotnetRootFolder = /x", "DotnetRootFolder ", " /x"},
           {"\tk\t=\tv\t", "\tk\t", "\tv\t"},
           {" =v", " ", "v"},
           {"#a=b", "#a", "b"},
           {";a=b", ";a", "b"},
           {"[main]=x", "[main]", "x"},
           {"k=\"v\"", "k", "\"v\""},
           {"k=v\r", "k", "v\r"},
           {"\xef\xbb\xbfk=v", "\xef\xbb\xbfk", "v"},
           {"k\0l=v\0w"sv, "k\0l"sv, "v\0w"sv},
           {"\xff=\xfe", "\xff", "\xfe"},
       })) {
    SCOPED_TRACE(line);

    const auto parsed = ParseSettingsLine(line);

    ASSERT_TRUE(parsed.has_value());
    EXPECT_EQ(parsed->key, key);
    EXPECT_EQ(parsed->value, value);
  }
}

TEST(SettingsLine, SetsNothingWithoutAnEqualsSignOrWithOneAtItsVeryBeginning) {
  for (const std::string_view line :
       {""sv, "="sv, "=v"sv, "==v"sv, "key"sv, "[main]"sv, "# comment"sv, "\r"sv, "\0"sv}) {
    SCOPED_TRACE(line);
    EXPECT_FALSE(ParseSettingsLine(line).has_value());
  }
}

TEST(SettingsLine, RefersToTheLineItself) {
  const std::string line = "key=value";

  const auto parsed = ParseSettingsLine(line);

  EXPECT_EQ(parsed->key.data(), line.data());
  EXPECT_EQ(parsed->value.data(), line.data() + 4);
}

}  // namespace
}  // namespace netloader::quor::detail
