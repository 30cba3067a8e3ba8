#include "tests/scheduler/AllocationCount.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> liveAllocations = 0;

void* Allocate(std::size_t size) {
  void* const memory = std::malloc(size == 0 ? 1 : size);
  liveAllocations += memory == nullptr ? 0 : 1;
  return memory;
}

void Free(void* memory) {
  liveAllocations -= memory == nullptr ? 0 : 1;
  std::free(memory);
}

}  // namespace

long LiveAllocations() {
  return liveAllocations;
}

void* operator new(std::size_t size) {
  void* const memory = Allocate(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return Allocate(size);
}

void operator delete(void* memory) noexcept {
  Free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
  Free(memory);
}

void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept {
  Free(memory);
}
