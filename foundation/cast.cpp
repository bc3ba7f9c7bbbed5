#include "foundation/cast.h"

#include <typeinfo>

#include "foundation/convert_to_container.h"

namespace tov::text {
namespace {

// Through converters of its own, since the C library's follow a locale, which a system may not have. Through `Replace`,
// since a lack of memory must not look like a malformed text.
template <typename Converter>
typename Converter::Output Convert(typename Converter::Input text) {
  typename Converter::Output converted;
  if (!Converter::Replace(text, converted, 0)) {
    throw std::bad_cast();
  }
  return converted;
}

}  // namespace

template <>
std::string Cast<std::string>(std::u16string_view text) {
  return Convert<tov::detail::ConvertToContainer<detail::StrictUtf16CharConverter, Utf8CharConverter>>(text);
}

// Both sides are strict: what is not a character in a UTF-8 locale is not one here.
template <>
WideString Cast<WideString>(std::string_view text) {
  return Convert<tov::detail::ConvertToContainer<detail::StrictUtf8CharConverter, detail::StrictUtf16CharConverter>>(
      text);
}

template <>
std::string Cast<std::string>(std::string_view text) {
  return std::string(text);
}

}  // namespace tov::text
