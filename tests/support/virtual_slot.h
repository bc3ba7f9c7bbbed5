// Where a virtual operation stands in the table of its class.
#pragma once

#include <array>
#include <bit>
#include <cstddef>

namespace tests {

/// The number of the operation's slot. A destructor takes two slots. By the C++ interface of this platform a pointer to
/// a virtual member holds one more than the slot's offset.
template <typename Method>
std::ptrdiff_t VirtualSlot(Method method) {
  static_assert(sizeof(Method) == 2 * sizeof(std::ptrdiff_t));
  const auto parts = std::bit_cast<std::array<std::ptrdiff_t, 2>>(method);
  return (parts[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

}  // namespace tests
