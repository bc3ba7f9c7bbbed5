#include "netloader/netloaderhostfxr/src/string_token.h"

#include <algorithm>
#include <array>
#include <utility>

namespace netloader {
namespace {

constexpr auto kTokens =
    std::to_array<std::string_view>({"${ORIGIN}", "${LIB}", "${PLATFORM}", "$ORIGIN", "$LIB", "$PLATFORM"});
constexpr std::string_view kWordCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";

// Without braces a token is a whole word: $LIBRARY is none.
bool StartsWithToken(std::string_view text, std::string_view token) {
  const bool endsByItself = token.ends_with('}') || text.size() <= token.size();
  return text.starts_with(token) &&
         (endsByItself || kWordCharacters.find(text[token.size()]) == std::string_view::npos);
}

}  // namespace

std::string_view FindStringToken(std::string_view path) {
  for (auto at = path.find('$'); at != std::string_view::npos; at = path.find('$', at + 1)) {
    const std::string_view rest = path.substr(at);
    const auto token = std::ranges::find_if(kTokens, [&](auto each) { return StartsWithToken(rest, each); });
    if (token != kTokens.end()) {
      return rest.substr(0, token->size());
    }
  }
  return {};
}

}  // namespace netloader
