#include "tests/foundation/failing_memory.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

thread_local std::size_t successesLeft = kNever;
thread_local bool failed = false;
std::atomic<std::size_t> made = 0;
std::atomic<std::size_t> freed = 0;

void* Allocate(std::size_t size) noexcept {
  if (successesLeft == 0) {
    successesLeft = kNever;
    failed = true;
    return nullptr;
  }
  if (successesLeft != kNever) {
    --successesLeft;
  }
  ++made;
  return std::malloc(size == 0 ? 1 : size);
}

void* AllocateOrThrow(std::size_t size) {
  if (void* memory = Allocate(size)) {
    return memory;
  }
  throw std::bad_alloc();
}

void Free(void* memory) noexcept {
  if (memory != nullptr) {
    ++freed;
    std::free(memory);
  }
}

}  // namespace

void* operator new(std::size_t size) {
  return AllocateOrThrow(size);
}
void* operator new[](std::size_t size) {
  return AllocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return Allocate(size);
}
void operator delete(void* memory) noexcept {
  Free(memory);
}
void operator delete[](void* memory) noexcept {
  Free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
  Free(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept {
  Free(memory);
}
void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept {
  Free(memory);
}
void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept {
  Free(memory);
}

namespace tests {

FailingMemory::FailingMemory(std::size_t successes) {
  failed = false;
  successesLeft = successes;
}

FailingMemory::~FailingMemory() {
  successesLeft = kNever;
}

bool FailingMemory::HasFailed() const {
  return failed;
}

std::size_t AllocationsMade() {
  return made;
}

std::size_t AllocationsAlive() {
  return made - freed;
}

}  // namespace tests
