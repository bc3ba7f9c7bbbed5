// How the program that asks the dynamic loader reports the answer.
#pragma once

namespace tests {

inline constexpr int kAskLoaderLoads = 10;
inline constexpr int kAskLoaderRefuses = 11;

}  // namespace tests
