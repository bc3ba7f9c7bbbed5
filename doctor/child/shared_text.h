// Memory that a process shares with its child, for a text that the child leaves there.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace doctor {

/// Room for one text. It needs no descriptor, so whoever closes all of them spoils nothing.
class SharedText {
 public:
  /// As many bytes as there is room for. Only those that are written take memory.
  static constexpr std::size_t kLongest = std::size_t{4} * 1024 * 1024;

  /// Not there, with the reason in `errno`, when there is no memory.
  SharedText();
  ~SharedText();
  SharedText(const SharedText&) = delete;
  SharedText& operator=(const SharedText&) = delete;

  bool IsThere() const { return shared_ != nullptr; }

  /// Leaves the text, as far as there is room.
  void Write(std::string_view text);

  /// The text; empty unless it has been written to its end.
  std::string Read() const;

 private:
  struct Shared;

  Shared* shared_;
};

}  // namespace doctor
