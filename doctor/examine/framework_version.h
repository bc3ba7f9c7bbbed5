// The version of a framework, as the host reads and orders it.
#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace doctor {

/// "6.0.36", "7.0.0-rc.2", "6.0.1+build".
class FrameworkVersion {
 public:
  /// Three numbers without zeros in front, then what semantic versioning permits. Empty for any other text.
  static std::optional<FrameworkVersion> Parse(std::string_view text);

  unsigned int Major() const { return major_; }
  unsigned int Minor() const { return minor_; }
  unsigned int Patch() const { return patch_; }
  bool IsPrerelease() const { return !prerelease_.empty(); }
  /// The text that it was read from.
  const std::string& Text() const { return text_; }

  /// A pre-release comes before its release; pre-releases are compared part by part, numbers as numbers.
  std::strong_ordering operator<=>(const FrameworkVersion& other) const;
  bool operator==(const FrameworkVersion& other) const { return (*this <=> other) == std::strong_ordering::equal; }

 private:
  unsigned int major_ = 0;
  unsigned int minor_ = 0;
  unsigned int patch_ = 0;
  std::string prerelease_;  // Without the hyphen.
  std::string build_;       // Without the plus sign.
  std::string text_;
};

}  // namespace doctor
