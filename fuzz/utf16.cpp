// Any units as UTF-16: the lenient conversion takes all of it and comes back to it; the strict one agrees with it, and
// refuses lone surrogates alone.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <typeinfo>

#include "foundation/cast.h"
#include "foundation/convert_to_container.h"
#include "fuzz/require.h"

using tov::NarrowString;
using tov::WideString;

namespace {

bool HasLoneSurrogate(const WideString& text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool high = (text[i] & 0xFC00) == 0xD800;
    const bool pair = high && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00;
    if ((text[i] & 0xF800) == 0xD800 && !pair) {
      return true;
    }
    i += pair ? 1 : 0;
  }
  return false;
}

std::optional<std::string> Strict(const WideString& text) {
  try {
    return tov::text::Cast<std::string>(text);
  } catch (const std::bad_cast&) {
    return std::nullopt;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  WideString text(size / 2, u'\0');
  std::memcpy(text.data(), data, text.size() * 2);
  NarrowString lenient;
  WideString back;

  Require(tov::text::Utf16ToUtf8::Do(text, lenient, 0) == 0);
  Require(tov::text::Utf8ToUtf16::Do(lenient, back, 0) == 0 && back == text);
  const std::optional<std::string> strict = Strict(text);
  Require(strict.has_value() == !HasLoneSurrogate(text));
  Require(!strict || *strict == lenient);
  return 0;
}
