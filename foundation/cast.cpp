#include "foundation/cast.h"

#include <typeinfo>

#include "foundation/char_converters.h"
#include "foundation/convert_to_container.h"

namespace tov::text {
namespace {

// Converters of our own, since the C library's follow a locale, which a system may not have.
using ToMultibyte = tov::detail::ConvertToContainer<detail::StrictUtf16CharConverter, Utf8CharConverter>;
using ToWide = tov::detail::ConvertToContainer<detail::StrictUtf8CharConverter, detail::StrictUtf16CharConverter>;

// Through `Replace`, since a lack of memory must not look like a malformed text.
template <typename Converter>
void ConvertInto(typename Converter::Output& converted, typename Converter::Input text) {
  if (!Converter::Replace(text, converted, 0)) {
    throw std::bad_cast();
  }
}

template <typename Converter>
typename Converter::Output Convert(typename Converter::Input text) {
  typename Converter::Output converted;
  ConvertInto<Converter>(converted, text);
  return converted;
}

}  // namespace

template <>
std::string Cast<std::string>(std::u16string_view text) {
  return Convert<ToMultibyte>(text);
}

// Both sides are strict: what is not a character in a UTF-8 locale is not one here.
template <>
WideString Cast<WideString>(std::string_view text) {
  return Convert<ToWide>(text);
}

template <>
std::string Cast<std::string>(std::string_view text) {
  return std::string(text);
}

void CastInto(WideString& converted, std::string_view text) {
  ConvertInto<ToWide>(converted, text);
}

}  // namespace tov::text
