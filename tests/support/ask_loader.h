// How the program that asks the dynamic loader tells what it was told.
#pragma once

namespace tests {

inline constexpr int kAskLoaderLoads = 10;
inline constexpr int kAskLoaderRefuses = 11;

}  // namespace tests
