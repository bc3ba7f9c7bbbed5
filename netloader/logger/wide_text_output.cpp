#include "netloader/logger/wide_text_output.h"

#include <ostream>

#include "netloader/utils/text_conversion.h"

std::ostream& operator<<(std::ostream& os, const wchar_t* text) {
  // As a C string: the bytes up to their first NUL.
  // cppcheck-suppress stlcstrStream
  return os << netloader::utils::ToString(text, false).c_str();
}

std::ostream& operator<<(std::ostream& os, const std::wstring& text) {
  // cppcheck-suppress stlcstrStream  // By the function above, which ends it at its first NUL.
  return os << text.c_str();
}

std::ostream& operator<<(std::ostream&& os, const wchar_t* text) {
  return os << text;
}

std::ostream& operator<<(std::ostream&& os, const std::wstring& text) {
  return os << text;
}
