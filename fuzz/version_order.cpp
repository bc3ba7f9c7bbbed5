// The names of version folders, a line each, in the order in which they are tried: by their numbers, as a plain reading
// of a C integer has them, and by a strict weak order.
#include "netloader/netloaderhostfxr/src/version_order.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <typeinfo>
#include <vector>

#include "foundation/strings.h"
#include "fuzz/support.h"
#include "netloader/netloaderhostfxr/src/host_fxr_module_parameters.h"
#include "netloader/netloaderhostfxr/src/loadermodule.h"

using tov::WideString;

namespace {

const WideString kPrefix = u"6.0.";
constexpr std::size_t kMostNames = 32;

int Digit(char letter) {
  const std::size_t value = std::string_view("0123456789abcdef").find(static_cast<char>(letter | 0x20));
  const bool isDigit = letter >= '0' && letter <= '9';
  const bool isLetter = (letter >= 'a' && letter <= 'f') || (letter >= 'A' && letter <= 'F');
  return isDigit ? letter - '0' : isLetter ? static_cast<int>(value) : 99;
}

long Integer(std::string_view text) {
  text = text.substr(0, text.find('\0'));
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  const bool isNegative = text.starts_with('-');
  text.remove_prefix(isNegative || text.starts_with('+') ? 1 : 0);
  int base = text.starts_with('0') ? 8 : 10;
  if ((text.starts_with("0x") || text.starts_with("0X")) && text.size() > 2 && Digit(text[2]) < 16) {
    base = 16;
    text.remove_prefix(2);
  }
  __int128 value = 0;
  for (std::size_t i = 0; i < text.size() && Digit(text[i]) < base; ++i) {
    value = std::min<__int128>(value * base + Digit(text[i]), __int128{1} << 64);
  }
  return static_cast<long>(std::clamp<__int128>(isNegative ? -value : value, LONG_MIN, LONG_MAX));
}

// What the product has to say of a name. Empty where it throws.
std::optional<long> Number(const WideString& name) {
  if (name.size() < kPrefix.size()) {
    return std::nullopt;
  }
  const auto tail = StrictUtf8(name.substr(kPrefix.size()));
  return tail ? std::optional(Integer(*tail)) : std::nullopt;
}

void CheckNumber(const WideString& name) {
  try {
    Require(netloader::VersionNumber(name, kPrefix) == Number(name));
  } catch (const std::out_of_range&) {
    Require(name.size() < kPrefix.size());
  } catch (const std::bad_cast&) {
    Require(name.size() >= kPrefix.size() && !Number(name));
  }
}

void CheckOrder(const std::vector<WideString>& names) {
  std::vector<WideString> order = netloader::NewestFirst(names, kPrefix);
  Require(std::is_permutation(order.begin(), order.end(), names.begin(), names.end()));
  for (std::size_t i = 1; i < order.size(); ++i) {
    Require(*Number(order[i - 1]) >= *Number(order[i]));
  }
}

bool IsBefore(const WideString& a, const WideString& b) {
  static const netloader::LoaderModule loader([] {
    netloader::HostFxrModuleParameters parameters;
    parameters.dotnetVersionPrefix = kPrefix;
    return parameters;
  }());
  return loader.VersionSortPredicate(a, b);
}

void CheckThree(const WideString& a, const WideString& b, const WideString& c) {
  const auto areEqual = [](const auto& one, const auto& other) {
    return !IsBefore(one, other) && !IsBefore(other, one);
  };
  Require(!IsBefore(a, a));
  Require(!(IsBefore(a, b) && IsBefore(b, a)));
  Require(!(IsBefore(a, b) && IsBefore(b, c)) || IsBefore(a, c));
  Require(!(areEqual(a, b) && areEqual(b, c)) || areEqual(a, c));
  Require(IsBefore(a, b) == (*Number(a) > *Number(b)));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<WideString> numbered;
  for (Lines lines(AsText(data, size)); !lines.IsAtEnd() && numbered.size() < kMostNames;) {
    const WideString name = Widened(lines.Next());
    CheckNumber(name);
    if (Number(name)) {
      numbered.push_back(name);
    }
  }
  CheckOrder(numbered);
  for (std::size_t i = 2; i < numbered.size(); ++i) {
    CheckThree(numbered[i - 2], numbered[i - 1], numbered[i]);
  }
  return 0;
}
