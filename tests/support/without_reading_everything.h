// A test without root's right to read everything.
#pragma once

#include <cstdint>

namespace tests {

/// While it lives, this thread may read and search only what the permissions say, as an ordinary user may. Throws
/// std::system_error when the rights cannot be given up.
class WithoutReadingEverything {
 public:
  WithoutReadingEverything();
  ~WithoutReadingEverything();
  WithoutReadingEverything(const WithoutReadingEverything&) = delete;
  WithoutReadingEverything& operator=(const WithoutReadingEverything&) = delete;

 private:
  std::uint32_t before_;
};

}  // namespace tests
