// Bytes as UTF-8: what the strict conversion takes the lenient one takes too, with the same result, and back again.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <typeinfo>

#include "foundation/cast.h"
#include "foundation/convert_to_container.h"
#include "fuzz/require.h"

using tov::NarrowString;
using tov::WideString;
using tov::text::Utf16ToUtf8;
using tov::text::Utf8ToUtf16;

namespace {

std::optional<WideString> Strict(std::string_view bytes) {
  try {
    return tov::text::Cast<WideString>(bytes);
  } catch (const std::bad_cast&) {
    return std::nullopt;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  WideString lenient = u"kept";
  const int result = Utf8ToUtf16::Do(bytes, lenient, 4);
  const std::optional<WideString> strict = Strict(bytes);

  Require(result == 0 || result == tov::result_code::kInvalidArgument);
  Require(lenient.starts_with(u"kept"));
  Require(result == 0 || lenient == u"kept");
  if (strict) {
    Require(result == 0 && lenient == u"kept" + *strict);
    Require(tov::text::Cast<std::string>(*strict) == bytes);
  }
  NarrowString back;
  WideString again;
  Require(Utf16ToUtf8::Do(lenient, back, 0) == 0);
  Require(Utf8ToUtf16::Do(back, again, 0) == 0 && again == lenient);
  return 0;
}
