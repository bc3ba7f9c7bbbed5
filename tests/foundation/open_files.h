// How many files this process has open.
#pragma once

#include <cstddef>

namespace tests {

/// The number of open descriptors. Throws when it cannot be determined.
[[nodiscard]] std::size_t OpenFiles();

}  // namespace tests
