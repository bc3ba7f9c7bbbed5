#include "tests/support/scoped_environment.h"

#include <cstdlib>

namespace tests {

ScopedEnvironment::ScopedEnvironment(const std::map<std::string, std::string>& variables) {
  for (const auto& [name, value] : variables) {
    Set(name, value);
  }
}

ScopedEnvironment::~ScopedEnvironment() {
  for (const auto& [name, value] : before_) {
    if (value) {
      ::setenv(name.c_str(), value->c_str(), 1);
    } else {
      ::unsetenv(name.c_str());
    }
  }
}

ScopedEnvironment& ScopedEnvironment::Set(const std::string& name, const std::string& value) {
  Remember(name);
  ::setenv(name.c_str(), value.c_str(), 1);
  return *this;
}

ScopedEnvironment& ScopedEnvironment::Remove(const std::string& name) {
  Remember(name);
  ::unsetenv(name.c_str());
  return *this;
}

// Only what was there first is worth going back to.
void ScopedEnvironment::Remember(const std::string& name) {
  before_.try_emplace(name, Variable(name));
}

std::optional<std::string> Variable(const std::string& name) {
  const char* value = std::getenv(name.c_str());
  return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

}  // namespace tests
