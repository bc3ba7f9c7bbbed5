#include "foundation/utf.h"

#include "foundation/convert_to_container.h"

namespace tov::text {

// The results are dropped on purpose: whoever has to know why a conversion failed calls `Do`; here the empty text of a
// failed one is the answer.
NarrowString ToUtf8(std::u16string_view text) noexcept {
  NarrowString bytes;
  static_cast<void>(Utf16ToUtf8::Do(text, bytes, 0));
  return bytes;
}

WideString ToUtf16(std::string_view bytes) noexcept {
  WideString text;
  static_cast<void>(Utf8ToUtf16::Do(bytes, text, 0));
  return text;
}

}  // namespace tov::text
