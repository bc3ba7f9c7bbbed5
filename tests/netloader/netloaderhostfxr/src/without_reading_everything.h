// Permissions that hold for root, too.
#pragma once

namespace tests {

/// Takes away what lets root read and search everything, while it lives. Throws when it cannot.
class WithoutReadingEverything {
 public:
  WithoutReadingEverything();
  ~WithoutReadingEverything();
  WithoutReadingEverything(const WithoutReadingEverything&) = delete;
  WithoutReadingEverything& operator=(const WithoutReadingEverything&) = delete;

 private:
  unsigned int before_;
};

}  // namespace tests
