// Names in one line of text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace doctor {

/// Keeps the first names: a line of text is no place for thousands.
class ShortList {
 public:
  /// A name that is there already counts once.
  void Add(std::string_view name);

  /// "a, b, c and more"; empty when there is none.
  std::string Text() const;

 private:
  std::vector<std::string> names_;
  bool has_more_ = false;
};

}  // namespace doctor
