#include "netloader/utils/text_conversion.h"

#include <codecvt>
#include <locale>
#include <stdexcept>

namespace netloader::utils {
namespace {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"  // Its exact verdicts on malformed text are part of ours.
using Converter = std::wstring_convert<std::codecvt_utf8_utf16<wchar_t>>;
#pragma GCC diagnostic pop

}  // namespace

std::string ToString(const wchar_t* text, bool throwOnNull) {
  if (text == nullptr) {
    if (throwOnNull) {
      throw std::runtime_error("Failed co convert null wstring to string.");
    }
    return {};
  }
  return Converter().to_bytes(text);
}

std::wstring ToWString(const char* text, bool throwOnNull) {
  if (text == nullptr) {
    if (throwOnNull) {
      throw std::runtime_error("Failed co convert null string to wstring.");
    }
    return {};
  }
  return Converter().from_bytes(text);
}

}  // namespace netloader::utils
