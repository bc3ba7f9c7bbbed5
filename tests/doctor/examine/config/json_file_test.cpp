#include "doctor/examine/config/json_file.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

struct ReadBack {
  explicit ReadBack(const std::string& text) {
    const tests::TempFolder folder;
    tests::WriteFile(folder / "a.json", text);
    file = LookAtFile(folder / "a.json");
    object = ReadObject(file);
  }

  FileReport file;
  nlohmann::json object;
};

std::string Repeated(std::string_view text, std::size_t times) {
  std::string all;
  for (; times > 0; --times) {
    all += text;
  }
  return all;
}

TEST(JsonFile, WhatTheHostTakesIsTaken) {
  for (const char* text : {"{\"a\": 1}", "\xEF\xBB\xBF{\"a\": 1}", "// }\n{ /* { */ \"a\": 1}", "{\"a\": 1} more",
                           "{\"a\": 1}}", "{\"a\": 1, \"a\": 2}", "{\"b\": \"\xe9 \\\" }\", \"a\": 1}"}) {
    SCOPED_TRACE(text);
    const ReadBack read(text);

    EXPECT_EQ(read.file.state, FileState::kPresent);
    EXPECT_EQ(read.object.value("a", 0), 1);
  }
}

TEST(JsonFile, OfEqualNamesTheFirstCountsWhateverTheOthersHold) {
  for (const char* text :
       {R"({"a": 1, "a": {}, "a": 2})", R"({"a": 1, "b": 0, "b": {"c": {}}, "a": 2})",
        R"({"b": [[{}]], "a": 1, "b": {"a": 3}, "a": 2})", R"({"b": {"a": 5}, "a": 1, "b": [{"a": 6}, {}], "a": 2})"}) {
    EXPECT_EQ(ReadBack(text).object.value("a", 0), 1) << text;
  }
}

// None of its readers and destructors may go into the depth on the stack.
TEST(JsonFile, ValuesMayBeNestedDeeperThanAnyStackIs) {
  constexpr std::size_t kDepth = 200'000;
  std::string text = R"({"a": 1, "b": )";
  for (const auto& [open, close] : {std::pair(R"({"b":)", "}"), std::pair("[", "]")}) {
    text += Repeated(open, kDepth) + "0" + Repeated(close, kDepth) + R"(, "c": )";
  }
  text += "0}";

  EXPECT_EQ(ReadBack(text).object.value("a", 0), 1);
  EXPECT_EQ(ReadBack(text.substr(0, text.size() / 2)).file.state, FileState::kMalformed);
}

TEST(JsonFile, TheLineThatIsNotJsonIsNamed) {
  struct Row {
    const char* text;
    std::size_t line;
  };
  const Row rows[] = {
      {"hello", 1},
      {"", 1},
      {"{\n\"a\": 1,\n}", 3},
      {"{\n\"a\": 1\n\"b\": 2}", 3},
      {"{\n\"a\": \"x\n\"}", 2},
      {"{\n\n'a': 1}", 3},
      {"{\"a\": [1,\n2}\n", 2},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    const ReadBack read(row.text);

    EXPECT_EQ(read.file.state, FileState::kMalformed);
    EXPECT_EQ(read.file.line, row.line);
    EXPECT_TRUE(read.object.empty());
  }
}

TEST(JsonFile, WhatIsJsonButNoObjectHasNoSuchLine) {
  for (const char* text : {"[1]", "null", "5"}) {
    const ReadBack read(text);

    EXPECT_EQ(read.file.state, FileState::kMalformed) << text;
    EXPECT_EQ(read.file.line, 0U) << text;
  }
}

}  // namespace
}  // namespace doctor
