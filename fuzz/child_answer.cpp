// What a child may have left to its parent, which can be anything: it is an answer just when it is written as one, and
// then says the same.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "doctor/child/answer.h"
#include "fuzz/support.h"

using doctor::ChildEnd;
using doctor::WorkEnd;

namespace {

// Texts that each end with a NUL, the first of them how the work ended.
std::optional<WorkEnd> Read(std::string_view bytes) {
  std::vector<std::string> texts;
  std::string text;
  for (const char letter : bytes) {
    if (letter != '\0') {
      text += letter;
    } else {
      texts.push_back(std::exchange(text, {}));
    }
  }
  if (!text.empty() || texts.empty()) {
    return std::nullopt;
  }
  const std::string how = texts.front();
  texts.erase(texts.begin());
  return how == "finished"        ? std::optional(WorkEnd{ChildEnd::kFinished, texts})
         : how == "threw"         ? std::optional(WorkEnd{ChildEnd::kThrew, texts})
         : how == "threw unknown" ? std::optional(WorkEnd{ChildEnd::kThrewUnknown, texts})
                                  : std::nullopt;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes = AsText(data, size);
  const auto expected = Read(bytes);

  const auto decoded = doctor::Decode(bytes);

  Require(decoded.has_value() == expected.has_value());
  if (decoded) {
    Require(decoded->end == expected->end && decoded->texts == expected->texts);
    Require(doctor::Encode(*decoded) == bytes);
  }
  return 0;
}
