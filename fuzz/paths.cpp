// Two paths, a line each: joined and taken apart as a model does it unit by unit, and searched for the words that the
// dynamic loader replaces.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/path.h"
#include "fuzz/support.h"
#include "netloader/netloaderhostfxr/src/string_token.h"
#include "netloader/netloaderhostfxr/src/version_discovery.h"
#include "netloader/utils/path_utils.h"

using tov::WideString;
using tov::filesystem::detail::PathImplBase;

namespace {

bool EndsOpen(const WideString& path) {
  return !path.empty() && path[path.size() - 1] != u'/';
}

WideString Joined(const WideString& path, const WideString& tail) {
  return tail.empty() ? path : EndsOpen(path) ? path + u"/" + tail : path + tail;
}

// The place behind the last slash; 0 without one.
std::size_t LastName(const WideString& path) {
  std::size_t at = path.size();
  while (at > 0 && path[at - 1] != u'/') {
    --at;
  }
  return at;
}

void CheckJoining(const WideString& path, const WideString& tail) {
  WideString appended = path;
  Require(PathImplBase::PathAppend(appended, tail) == Joined(path, tail) && appended == Joined(path, tail));
  WideString twice = path;
  Require(PathImplBase::PathAppend(twice, twice) == Joined(path, path));
  WideString ended = path;
  Require(PathImplBase::PathAddLastSeparator(ended) == (EndsOpen(path) || path.empty() ? path + u"/" : path));
  Require(netloader::FxrFolder(path) == Joined(Joined(path, u"host"), u"fxr"));
  Require(netloader::HostLibraryPath(path, tail, u"l.so") == Joined(Joined(path, tail), u"l.so"));
}

void CheckParts(const WideString& path) {
  const std::size_t name = LastName(path);
  const WideString parent = name == 0 ? u"" : name == 1 ? u"/" : path.substr(0, name - 1);
  Require(netloader::utils::GetLastFolderName(path) == path.substr(name));
  Require(netloader::utils::GetParentPath(path) == parent);
  Require(netloader::utils::CheckIsValidPath(path) == (path.find(u'/') == 0));
}

bool IsOfWord(char letter) {
  return letter == '_' || (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') ||
         (letter >= 'a' && letter <= 'z');
}

bool IsReplaced(std::string_view name) {
  return name == "ORIGIN" || name == "LIB" || name == "PLATFORM";
}

// The token at a dollar sign: in braces all up to the closing one, else the whole word.
std::string_view TokenAt(std::string_view text) {
  if (text.starts_with("${")) {
    const std::size_t end = text.find('}');
    return end != std::string_view::npos && IsReplaced(text.substr(2, end - 2)) ? text.substr(0, end + 1) : "";
  }
  std::size_t end = 1;
  while (end < text.size() && IsOfWord(text[end])) {
    ++end;
  }
  return IsReplaced(text.substr(1, end - 1)) ? text.substr(0, end) : "";
}

std::string_view FirstToken(std::string_view text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '$' && !TokenAt(text.substr(at)).empty()) {
      return TokenAt(text.substr(at));
    }
  }
  return "";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Lines lines(AsText(data, size));
  const std::string_view first = lines.Next();
  const std::string_view second = lines.Next();

  CheckJoining(Widened(first), Widened(second));
  CheckParts(Widened(first));
  for (const std::string_view text : {first, second}) {
    const std::string_view token = netloader::FindStringToken(text);
    Require(token == FirstToken(text));
    Require(token.empty() || (token.data() >= text.data() && token.data() + token.size() <= text.data() + text.size()));
  }
  return 0;
}
