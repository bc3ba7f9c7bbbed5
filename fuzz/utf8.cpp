// Any bytes as UTF-8. The cast does what the C library does, the lenient conversion what a plain one does, and that of
// the log's texts takes what is well-formed.
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

std::optional<std::u16string> Cast(std::string_view bytes) {
  try {
    return tov::text::Cast<tov::WideString>(bytes);
  } catch (const std::bad_cast&) {
    return std::nullopt;
  }
}

// One sequence after the other: only the lead byte and the value count.
std::optional<std::u16string> Lenient(std::string_view bytes) {
  std::u16string units;
  for (std::size_t i = 0; i < bytes.size();) {
    const unsigned lead = static_cast<unsigned char>(bytes[i]);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC0 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF8 ? 4
                                             : 0;
    if (length == 0 || i + length > bytes.size()) {
      return std::nullopt;
    }
    unsigned value = length == 1 ? lead : length == 2 ? lead - 0xC0 : length == 3 ? lead - 0xE0 : lead - 0xF0;
    for (std::size_t next = 1; next < length; ++next) {
      value = value * 64 + static_cast<unsigned char>(bytes[i + next]) % 64;
    }
    if (value > 0x10FFFF) {
      return std::nullopt;
    }
    if (value > 0xFFFF) {
      units += static_cast<char16_t>(0xD800 + (value - 0x10000) / 1024);
      units += static_cast<char16_t>(0xDC00 + value % 1024);
    } else {
      units += static_cast<char16_t>(value);
    }
    i += length;
  }
  return units;
}

void CheckLenient(std::string_view bytes) {
  tov::WideString units = u"kept and replaced";
  const int result = tov::text::Utf8ToUtf16::Do(bytes, units, 4);
  const auto expected = Lenient(bytes);

  Require(result == (expected ? 0 : tov::result_code::kInvalidArgument));
  Require(units == (expected ? u"kept" + *expected : u"kept and replaced"));
  Require(tov::text::ToUtf16(bytes) == expected.value_or(u""));
}

void CheckTextOfLog(const std::string& bytes) {
  const std::string_view text = bytes.c_str();
  const auto strict = StrictUtf16(text);
  try {
    const std::wstring wide = netloader::utils::ToWString(bytes.c_str(), true);
    Require(!strict || wide == std::wstring(strict->begin(), strict->end()));
    // Nothing but an incomplete sequence may be left out, and it takes what encodes a surrogate.
    const auto lenient = Lenient(text);
    Require(!lenient || wide == std::wstring(lenient->begin(), lenient->end()));
  } catch (const std::range_error& error) {
    Require(!strict && error.what() == std::string_view("wstring_convert::from_bytes"));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes = AsText(data, size);
  const auto units = Cast(bytes);

  Require(units == StrictUtf16(bytes));
  Require(!units || tov::text::Cast<std::string>(std::u16string_view(*units)) == bytes);
  Require(tov::text::Cast<std::string>(bytes) == bytes);
  CheckLenient(bytes);
  CheckTextOfLog(std::string(bytes));
  return 0;
}
