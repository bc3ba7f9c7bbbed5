// A folder name of any units behind a prefix: it has a number, unless it is too short or no UTF-16.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <typeinfo>

#include "foundation/strings.h"
#include "fuzz/require.h"
#include "netloader/netloaderhostfxr/src/version_order.h"

using netloader::VersionNumber;
using tov::WideString;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const WideString prefix = u"6.0.";
  WideString name(size / 2, u'\0');
  std::memcpy(name.data(), data, name.size() * 2);
  try {
    const long number = VersionNumber(prefix + name, prefix);
    const auto order = netloader::NewestFirst({prefix + u"0", prefix + name, prefix + u"7"}, prefix);
    const auto place = std::find(order.begin(), order.end(), prefix + name) - order.begin();
    Require(number <= 7 || place == 0);
    Require(number >= 0 || place == 2);
    Require(number <= 0 || number >= 7 || place == 1);
  } catch (const std::bad_cast&) {
    Require(std::any_of(name.begin(), name.end(), [](char16_t unit) { return (unit & 0xF800) == 0xD800; }));
  }
  try {
    VersionNumber(name, prefix);
    Require(name.size() >= prefix.size());
  } catch (const std::out_of_range&) {
    Require(name.size() < prefix.size());
  } catch (const std::bad_cast&) {
    Require(name.size() > prefix.size());
  }
  return 0;
}
