// A path, how often what follows is repeated, and a message: it is shortened as a plain search and replace does it.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/support.h"
#include "netloader/netloaderhostfxr/src/host_library.h"

namespace {

constexpr std::size_t kLongest = 255;
constexpr std::size_t kLongestInput = 4096;

std::string Replaced(std::string_view text, std::string_view folder) {
  std::string replaced;
  for (std::size_t at = 0; at < text.size();) {
    const bool isThere = !folder.empty() && text.substr(at).starts_with(folder);
    replaced += isThere ? "<path>" : std::string(1, text[at]);
    at += isThere ? folder.size() : 1;
  }
  return replaced;
}

std::string Shortened(const std::string& text, std::string_view path) {
  if (text.size() <= kLongest) {
    return text;
  }
  if (path.size() <= 6) {
    return text.substr(0, kLongest);
  }
  std::size_t end = path.size();
  for (std::size_t i = 0; i < path.size(); ++i) {
    end = path[i] == '/' ? i : end;
  }
  const std::string replaced = Replaced(text, path.substr(0, end));
  return replaced.substr(replaced.size() - std::min(replaced.size(), kLongest));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Lines lines(AsText(data, size));
  const std::string_view path = lines.Next();
  const std::size_t repetitions = lines.NextNumber();
  const std::string_view piece = lines.Rest();
  std::string text(piece);
  for (std::size_t i = 0; i < repetitions && text.size() < kLongestInput && !piece.empty(); ++i) {
    text += piece;
  }

  const std::string shortened = netloader::BoundedErrorText(text, path);

  Require(shortened.size() <= kLongest);
  Require(shortened == Shortened(text, path));
  return 0;
}
