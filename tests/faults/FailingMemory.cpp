#include "tests/faults/FailingMemory.h"

#include <atomic>
#include <cstdlib>
#include <new>
#include <thread>

namespace {

struct Plan {
  std::atomic<bool> m_IsOn = false;
  std::atomic<bool> m_HasFailed = false;
  std::atomic<long> m_Left = 0;
  // Set before m_IsOn.
  std::thread::id m_Test{};
  bool m_IsMine = false;
  bool m_Repeats = false;
};

Plan plan;
thread_local int spared = 0;

bool Fails() {
  if (!plan.m_IsOn.load(std::memory_order_acquire) || spared > 0) {
    return false;
  }
  if ((std::this_thread::get_id() == plan.m_Test) != plan.m_IsMine) {
    return false;
  }
  const long left = --plan.m_Left;
  const bool fails = left == 0 || (left < 0 && plan.m_Repeats);
  if (fails) {
    plan.m_HasFailed = true;
  }
  return fails;
}

void* Allocate(std::size_t size) {
  return Fails() ? nullptr : std::malloc(size == 0 ? 1 : size);
}

void* AllocateOrThrow(std::size_t size) {
  void* const memory = Allocate(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

}  // namespace

void FailingMemory::FailAt(long number, Whose whose, HowLong howLong) {
  plan.m_HasFailed = false;
  plan.m_Left = number;
  plan.m_Test = std::this_thread::get_id();
  plan.m_IsMine = whose == Mine;
  plan.m_Repeats = howLong == FromThenOn;
  plan.m_IsOn.store(true, std::memory_order_release);
}

bool FailingMemory::Recover() {
  plan.m_IsOn = false;
  return plan.m_HasFailed;
}

FailingMemory::Spared::Spared() {
  ++spared;
}

FailingMemory::Spared::~Spared() {
  --spared;
}

// All forms but those for over-aligned types, so that a sanitizer sees each pair as one of a kind.

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
  std::free(memory);
}

void operator delete[](void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept {
  std::free(memory);
}

void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept {
  std::free(memory);
}
