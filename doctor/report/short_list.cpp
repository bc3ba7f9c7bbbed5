#include "doctor/report/short_list.h"

#include <algorithm>

namespace doctor {
namespace {

constexpr std::size_t kMost = 10;

}  // namespace

void ShortList::Add(std::string_view name) {
  if (name.empty() || std::ranges::find(names_, name) != names_.end()) {
    return;
  }
  if (names_.size() < kMost) {
    names_.emplace_back(name);
  } else {
    has_more_ = true;
  }
}

std::string ShortList::Text() const {
  std::string text;
  for (const std::string& name : names_) {
    text.append(text.empty() ? "" : ", ").append(name);
  }
  return has_more_ ? text + " and more" : text;
}

}  // namespace doctor
