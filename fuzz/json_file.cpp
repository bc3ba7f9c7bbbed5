// JSON as the host reads it, written from the input together with what is in it: comments, blanks and a byte-order mark
// wherever they may stand, names that are given twice, bytes that are not UTF-8, anything behind the end.
#include "doctor/examine/config/json_file.h"

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "fuzz/support.h"

using nlohmann::json;

namespace {

constexpr std::size_t kDeepest = 12;

// Writes a text and builds its value, both as the bytes of the input say.
class Writer {
 public:
  explicit Writer(std::string_view choices) : choices_(choices) {}

  json Object(std::size_t depth) {
    json object = json::object();
    Put("{");
    for (std::size_t count = Choice(5); count > 0; --count) {
      const std::string name(1, static_cast<char>('a' + Choice(4)));
      Put("\"" + name + "\"");
      Put(":");
      const json value = Value(depth);
      if (!object.contains(name)) {  // The first of equal names counts.
        object[name] = value;
      }
      Put(count > 1 ? "," : "");
    }
    Put("}");
    return object;
  }

  const std::string& Text() const { return text_; }
  std::string_view Rest() const { return choices_; }

 private:
  json Value(std::size_t depth) {
    switch (depth < kDeepest ? Choice(7) : Choice(5)) {
      case 0:
        return Put("null"), nullptr;
      case 1:
        return Put("true"), true;
      case 2:
        return Put("-7"), -7;
      case 3:
        return Put("1.5e1"), 15.0;
      case 4:
        return String();
      case 5:
        return Array(depth + 1);
      default:
        return Object(depth + 1);
    }
  }

  json Array(std::size_t depth) {
    json array = json::array();
    Put("[");
    for (std::size_t count = Choice(4); count > 0; --count) {
      array.push_back(Value(depth));
      Put(count > 1 ? "," : "");
    }
    Put("]");
    return array;
  }

  json String() {
    constexpr std::string_view kPieces[] = {"a", "{", "]", "//", "/*", "\xC3\xA4", "\\\\", "\\\"", "\xFF", "\\u0041"};
    constexpr std::string_view kValues[] = {"a", "{", "]", "//", "/*", "\xC3\xA4", "\\", "\"", "?", "A"};
    std::string value;
    text_ += '"';
    for (std::size_t count = Choice(6); count > 0; --count) {
      const std::size_t piece = Choice(10);
      text_ += kPieces[piece];
      value += kValues[piece];
    }
    text_ += '"';
    Blank();
    return value;
  }

  void Put(std::string_view piece) {
    text_ += piece;
    Blank();
  }

  // What may stand between any two pieces.
  void Blank() {
    constexpr std::string_view kBlanks[] = {" ", "\r\n", "/* { \" */", "// } \"\n", "/**/"};
    if (const std::size_t choice = Choice(16); choice < 5) {
      text_ += kBlanks[choice];
    }
  }

  // A number below `count`.
  std::size_t Choice(std::size_t count) {
    if (choices_.empty()) {
      return 0;  // The smallest of all values, so that every text comes to its end.
    }
    const auto choice = static_cast<unsigned char>(choices_.front());
    choices_.remove_prefix(1);
    return choice % count;
  }

  std::string_view choices_;
  std::string text_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryFile file;
  Writer writer(AsText(data, size));
  const json expected = writer.Object(0);
  const bool hasMark = size % 2 == 0;
  file.Write((hasMark ? "\xEF\xBB\xBF" : "") + writer.Text() + std::string(writer.Rest()));

  doctor::FileReport report = doctor::LookAtFile(file.Path());
  const json object = doctor::ReadObject(report);

  Require(report.state == doctor::FileState::kPresent && report.line == 0);
  Require(object == expected);
  return 0;
}
