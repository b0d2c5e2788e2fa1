// Lets an allocation fail. A test program that uses it takes all of its memory by it.
#pragma once

namespace kx::tests {

// While there is one, the allocation of this number, from 1, raises std::bad_alloc on this thread.
class TFailingMemory {
public:
  explicit TFailingMemory(long number);
  ~TFailingMemory();
  TFailingMemory(const TFailingMemory&) = delete;
  TFailingMemory& operator=(const TFailingMemory&) = delete;
};

} // namespace kx::tests
