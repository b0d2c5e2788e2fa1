#include "tests/support/FailingMemory.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace kx::tests {

namespace {

thread_local bool isTester = false;
std::atomic<bool> ofTester = false;
std::atomic<long> left = 0; // until one fails, which makes it 0; below, none does

bool IsToFail() {
  return left > 0 && isTester == ofTester && --left == 0;
}

} // namespace

TFailingMemory::TFailingMemory(long number, TOf of) {
  isTester = true;
  ofTester = of == TOf::ThisThread;
  left = number;
}

TFailingMemory::~TFailingMemory() {
  left = -1;
  isTester = false;
}

bool TFailingMemory::HasFailed() const {
  return left <= 0;
}

} // namespace kx::tests

// All that goes with the deletes below is replaced: under AddressSanitizer the others are not built on it.
void* operator new(std::size_t size, const std::nothrow_t& /*unused*/) noexcept {
  return kx::tests::IsToFail() ? nullptr : std::malloc(size > 0 ? size : 1);
}

void* operator new(std::size_t size) {
  void* memory = operator new(size, std::nothrow);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
