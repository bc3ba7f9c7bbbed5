#include "tests/netloader/netloaderquorcommon/src/interposed_readlink.h"

#include <sys/syscall.h>
#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

extern "C" long syscall(long number, ...) noexcept;

namespace tests {
namespace {

std::optional<std::string> link_text;
std::optional<int> link_error;

}  // namespace

ScriptedLink::ScriptedLink(std::string text) {
  link_text = std::move(text);
}

ScriptedLink::~ScriptedLink() {
  link_text.reset();
}

UnreadableLink::UnreadableLink(int error) {
  link_error = error;
}

UnreadableLink::~UnreadableLink() {
  link_error.reset();
}

}  // namespace tests

extern "C" ssize_t readlink(const char* path, char* buffer, std::size_t size) noexcept {
  if (tests::link_error) {
    errno = *tests::link_error;
    return -1;
  }
  if (tests::link_text) {
    const std::size_t length = std::min(size, tests::link_text->size());
    std::memcpy(buffer, tests::link_text->data(), length);
    return static_cast<ssize_t>(length);
  }
  return ::syscall(SYS_readlink, path, buffer, size);
}
