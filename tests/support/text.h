// Texts made from others.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tests {

/// The text, so many times.
[[nodiscard]] inline std::string Repeated(std::string_view text, std::size_t times) {
  std::string repeated;
  for (; times > 0; --times) {
    repeated += text;
  }
  return repeated;
}

/// The text with every `what` in it replaced.
[[nodiscard]] inline std::string Replaced(std::string text, const std::string& what, const std::string& by) {
  for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
    text.replace(at, what.size(), by);
  }
  return text;
}

}  // namespace tests
