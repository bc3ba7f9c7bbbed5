#include "doctor/child/shared_text.h"

#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <new>

namespace doctor {

struct SharedText::Shared {
  std::atomic<std::size_t> length;  // Of a text that is whole, else 0.
  std::array<char, kLongest> bytes;
};
static_assert(std::atomic<std::size_t>::is_always_lock_free, "a lock would be each process's own");

SharedText::SharedText() : shared_(nullptr) {
  void* memory =
      ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory != MAP_FAILED) {
    shared_ = ::new (memory) Shared;  // Nothing but the length is touched.
  }
}

SharedText::~SharedText() {
  if (IsThere()) {
    ::munmap(shared_, sizeof(Shared));
  }
}

void SharedText::Write(std::string_view text) {
  text = text.substr(0, kLongest);
  std::ranges::copy(text, shared_->bytes.begin());
  shared_->length.store(text.size(), std::memory_order_release);
}

std::string SharedText::Read() const {
  const std::size_t length = shared_->length.load(std::memory_order_acquire);
  return {shared_->bytes.data(), std::min(length, kLongest)};
}

}  // namespace doctor
