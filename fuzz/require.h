// What a fuzz target says about its input.
#pragma once

#include <cstdlib>

/// Ends the process, which the fuzzer reports with its input, unless `fact` holds.
inline void Require(bool fact) {
  if (!fact) {
    std::abort();
  }
}
