// Lets an allocation fail. A test program that uses it takes all of its memory by it.
#pragma once

namespace kx::tests {

// While there is one, the allocation of this number, from 1, raises std::bad_alloc.
class TFailingMemory {
public:
  enum class TOf { ThisThread, OtherThreads };

  explicit TFailingMemory(long number, TOf of = TOf::ThisThread);
  ~TFailingMemory();
  TFailingMemory(const TFailingMemory&) = delete;
  TFailingMemory& operator=(const TFailingMemory&) = delete;

  bool HasFailed() const;
};

} // namespace kx::tests
