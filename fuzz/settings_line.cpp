// A settings file of any bytes: every line is skipped, or is its key, "=", and its value.
#include "netloader/netloaderquorcommon/src/settings_line.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <typeinfo>

#include "foundation/cast.h"
#include "fuzz/require.h"

using tov::WideString;
using tov::text::Cast;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream file(std::string(reinterpret_cast<const char*>(data), size));
  std::map<WideString, WideString> settings;
  for (std::string line; std::getline(file, line);) {
    const auto parsed = netloader::quor::ParseSettingsLine(line);
    Require(parsed.has_value() == (line.find('=', 1) != std::string::npos && line[0] != '='));
    if (!parsed) {
      continue;
    }
    Require(!parsed->key.empty() && parsed->key.find('=') == std::string_view::npos);
    Require(line == std::string(parsed->key) + "=" + std::string(parsed->value));
    try {
      const auto value = Cast<WideString>(parsed->value);
      settings.insert_or_assign(Cast<WideString>(parsed->key), value);
      Require(Cast<std::string>(value) == parsed->value);
    } catch (const std::bad_cast&) {
      return 0;
    }
  }
  return 0;
}
