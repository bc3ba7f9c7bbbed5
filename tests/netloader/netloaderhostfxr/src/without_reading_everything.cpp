#include "tests/netloader/netloaderhostfxr/src/without_reading_everything.h"

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace tests {
namespace {

using Capabilities = std::array<__user_cap_data_struct, 2>;

constexpr unsigned int kReadingEverything = (1U << CAP_DAC_OVERRIDE) | (1U << CAP_DAC_READ_SEARCH);

// The calling thread's; the C library has no function of its own for it.
void Call(long number, Capabilities& capabilities) {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  if (::syscall(number, &header, capabilities.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "capabilities");
  }
}

}  // namespace

WithoutReadingEverything::WithoutReadingEverything() {
  Capabilities capabilities{};
  Call(SYS_capget, capabilities);
  before_ = capabilities[0].effective;
  capabilities[0].effective &= ~kReadingEverything;
  Call(SYS_capset, capabilities);
}

WithoutReadingEverything::~WithoutReadingEverything() {
  Capabilities capabilities{};
  Call(SYS_capget, capabilities);
  capabilities[0].effective = before_;
  Call(SYS_capset, capabilities);
}

}  // namespace tests
