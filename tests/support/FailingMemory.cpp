#include "tests/support/FailingMemory.h"

#include <cstdlib>
#include <new>

namespace kx::tests {

namespace {

thread_local long left = 0; // until one fails; 0: none does

} // namespace

TFailingMemory::TFailingMemory(long number) {
  left = number;
}

TFailingMemory::~TFailingMemory() {
  left = 0;
}

} // namespace kx::tests

void* operator new(std::size_t size) {
  using kx::tests::left;
  void* memory = left > 0 && --left == 0 ? nullptr : std::malloc(size > 0 ? size : 1);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
