#include "tests/support/without_reading_everything.h"

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace tests {
namespace {

constexpr std::uint32_t kReadEverything = 1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH;

using Rights = std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3>;

Rights Get() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  Rights rights{};
  if (::syscall(SYS_capget, &header, rights.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "capget");
  }
  return rights;
}

bool SetEffective(Rights rights, std::uint32_t effective) {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  rights[0].effective = effective;
  return ::syscall(SYS_capset, &header, rights.data()) == 0;
}

}  // namespace

WithoutReadingEverything::WithoutReadingEverything() {
  const Rights rights = Get();
  before_ = rights[0].effective;
  if (!SetEffective(rights, before_ & ~kReadEverything)) {
    throw std::system_error(errno, std::generic_category(), "capset");
  }
}

WithoutReadingEverything::~WithoutReadingEverything() {
  SetEffective(Get(), before_);
}

}  // namespace tests
