#include "doctor/examine/framework_version.h"

#include <algorithm>
#include <charconv>
#include <tuple>

namespace doctor {
namespace {

constexpr std::string_view kDigits = "0123456789";
constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-";

bool IsNumber(std::string_view text) {
  return !text.empty() && text.find_first_not_of(kDigits) == std::string_view::npos;
}

bool HasZeroInFront(std::string_view number) {
  return number.size() > 1 && number.front() == '0';
}

// Takes the number at the beginning away; empty where there is none.
std::optional<unsigned int> TakeNumber(std::string_view& text) {
  const std::string_view digits = text.substr(0, text.find_first_not_of(kDigits));
  unsigned int number = 0;
  const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (digits.empty() || HasZeroInFront(digits) || read.ec != std::errc()) {
    return std::nullopt;
  }
  text.remove_prefix(digits.size());
  return number;
}

bool Take(std::string_view& text, char letter) {
  const bool isThere = text.starts_with(letter);
  text.remove_prefix(isThere ? 1 : 0);
  return isThere;
}

// Takes what stands before the next dot away.
std::string_view TakePart(std::string_view& text) {
  const std::string_view part = text.substr(0, text.find('.'));
  text.remove_prefix(std::min(part.size() + 1, text.size()));
  return part;
}

// Parts of letters, digits and hyphens between dots.
bool AreParts(std::string_view text, bool mayHaveZeroInFront) {
  bool areParts = !text.ends_with('.');
  do {
    const std::string_view part = TakePart(text);
    areParts = areParts && !part.empty() && part.find_first_not_of(kLetters) == std::string_view::npos &&
               (mayHaveZeroInFront || !IsNumber(part) || !HasZeroInFront(part));
  } while (!text.empty());
  return areParts;
}

std::strong_ordering CompareNumbers(std::string_view a, std::string_view b) {
  const auto bySize = a.size() <=> b.size();
  return bySize != std::strong_ordering::equal ? bySize : a <=> b;
}

std::strong_ordering ComparePart(std::string_view a, std::string_view b) {
  if (IsNumber(a) && IsNumber(b)) {
    return CompareNumbers(a, b);
  }
  return IsNumber(a) != IsNumber(b) ? IsNumber(b) <=> IsNumber(a) : a <=> b;
}

std::strong_ordering ComparePrereleases(std::string_view a, std::string_view b) {
  if (a.empty() || b.empty()) {
    return a.empty() <=> b.empty();
  }
  while (!a.empty() && !b.empty()) {
    if (const auto order = ComparePart(TakePart(a), TakePart(b)); order != std::strong_ordering::equal) {
      return order;
    }
  }
  return b.empty() <=> a.empty();
}

}  // namespace

std::optional<FrameworkVersion> FrameworkVersion::Parse(std::string_view text) {
  FrameworkVersion version;
  version.text_ = text;
  for (unsigned int* number : {&version.major_, &version.minor_, &version.patch_}) {
    const bool isParted = number == &version.major_ || Take(text, '.');
    const auto value = isParted ? TakeNumber(text) : std::nullopt;
    if (!value) {
      return std::nullopt;
    }
    *number = *value;
  }
  if (Take(text, '-')) {
    version.prerelease_ = text.substr(0, text.find('+'));
    text.remove_prefix(version.prerelease_.size());
    if (!AreParts(version.prerelease_, /*mayHaveZeroInFront=*/false)) {
      return std::nullopt;
    }
  }
  if (Take(text, '+')) {
    version.build_ = text;
    text = {};
    if (!AreParts(version.build_, /*mayHaveZeroInFront=*/true)) {
      return std::nullopt;
    }
  }
  return text.empty() ? std::optional(version) : std::nullopt;
}

std::strong_ordering FrameworkVersion::operator<=>(const FrameworkVersion& other) const {
  const auto byNumbers = std::tie(major_, minor_, patch_) <=> std::tie(other.major_, other.minor_, other.patch_);
  if (byNumbers != std::strong_ordering::equal) {
    return byNumbers;
  }
  const auto byPrerelease = ComparePrereleases(prerelease_, other.prerelease_);
  return byPrerelease != std::strong_ordering::equal ? byPrerelease : build_ <=> other.build_;
}

}  // namespace doctor
