// The environment of this process, changed for a while.
#pragma once

#include <map>
#include <optional>
#include <string>

namespace tests {

/// Sets and removes variables of this process; puts every one back when destroyed.
class ScopedEnvironment {
 public:
  ScopedEnvironment() = default;
  explicit ScopedEnvironment(const std::map<std::string, std::string>& variables);
  ~ScopedEnvironment();
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

  ScopedEnvironment& Set(const std::string& name, const std::string& value);
  ScopedEnvironment& Remove(const std::string& name);

 private:
  void Remember(const std::string& name);

  std::map<std::string, std::optional<std::string>> before_;
};

/// The variable's value in this process, or nothing when it is not set.
[[nodiscard]] std::optional<std::string> Variable(const std::string& name);

}  // namespace tests
