// Any units as UTF-16. The cast does what the C library does, the lenient conversion what a plain one does, and that of
// the log's texts takes what is well-formed.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <typeinfo>

#include "foundation/cast.h"
#include "foundation/convert_to_container.h"
#include "foundation/utf.h"
#include "fuzz/support.h"
#include "netloader/utils/text_conversion.h"

namespace {

std::optional<std::string> Cast(std::u16string_view units) {
  try {
    return tov::text::Cast<std::string>(units);
  } catch (const std::bad_cast&) {
    return std::nullopt;
  }
}

std::string Sequence(unsigned value) {
  const auto byte = [](unsigned bits) { return static_cast<char>(bits); };
  const auto next = [value](unsigned shift) { return static_cast<char>(0x80 + (value >> shift) % 64); };
  if (value < 0x80) {
    return {byte(value)};
  }
  if (value < 0x800) {
    return {byte(0xC0 + (value >> 6)), next(0)};
  }
  if (value < 0x10000) {
    return {byte(0xE0 + (value >> 12)), next(6), next(0)};
  }
  return {byte(0xF0 + (value >> 18)), next(12), next(6), next(0)};
}

// A lone surrogate is a sequence like any other.
std::string Lenient(std::u16string_view units) {
  std::string bytes;
  for (std::size_t i = 0; i < units.size(); ++i) {
    const unsigned unit = units[i];
    const unsigned next = i + 1 < units.size() ? units[i + 1] : 0;
    const bool isPair = unit >= 0xD800 && unit < 0xDC00 && next >= 0xDC00 && next < 0xE000;
    bytes += Sequence(isPair ? (unit - 0xD800) * 1024 + (next - 0xDC00) + 0x10000 : unit);
    i += isPair ? 1 : 0;
  }
  return bytes;
}

void CheckLenient(const tov::WideString& units) {
  const std::string expected = Lenient(units);
  tov::NarrowString bytes = "kept and replaced";
  tov::WideString back;

  Require(tov::text::Utf16ToUtf8::Do(units, bytes, 4) == 0 && bytes == "kept" + expected);
  Require(tov::text::ToUtf8(units) == expected);
  Require(tov::text::Utf8ToUtf16::Do(expected, back, 0) == 0 && back == units);
}

// Empty for text that does not convert.
std::optional<std::string> TextOfLog(const std::wstring& text) {
  try {
    return netloader::utils::ToString(text.c_str(), true);
  } catch (const std::range_error& error) {
    Require(error.what() == std::string_view("wstring_convert::to_bytes"));
    return std::nullopt;
  }
}

void CheckTextOfLog(std::u16string_view units) {
  units = units.substr(0, units.find(u'\0'));
  const auto converted = TextOfLog(std::wstring(units.begin(), units.end()));
  if (!units.empty() && units.back() >= 0xD800 && units.back() < 0xDC00) {
    units.remove_suffix(1);  // Its other half may be yet to come.
  }
  Require(converted == StrictUtf8(units));
}

// The same input as the 32-bit characters of the platform: never text that is not UTF-8.
void CheckWideCharacters(const std::uint8_t* data, std::size_t size) {
  std::wstring text(size / sizeof(wchar_t), L'\0');
  std::copy_n(data, text.size() * sizeof(wchar_t), reinterpret_cast<std::uint8_t*>(text.data()));
  const auto converted = TextOfLog(text);
  Require(!converted || StrictUtf16(*converted));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const tov::WideString units = AsUnits(data, size);
  const auto bytes = Cast(units);

  Require(bytes == StrictUtf8(units));
  Require(!bytes || tov::text::Cast<tov::WideString>(std::string_view(*bytes)) == units);
  CheckLenient(units);
  CheckTextOfLog(units);
  CheckWideCharacters(data, size);
  return 0;
}
