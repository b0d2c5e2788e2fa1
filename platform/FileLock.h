// One at a time, among all processes of this machine.
#pragma once

#include "platform/Result.h"

#include <chrono>
#include <memory>
#include <string_view>

namespace kx::platform {

// Whoever reads a file, changes it and writes it back holds this meanwhile. The lock is a file beside the one
// that it is for, there only while somebody holds it; the system frees the lock of a process that ends,
// however it ends.
class FileLock {
public:
  // Waits for whoever holds it. Fails when the time is over or the file cannot be made.
  static Result<FileLock> Acquire(std::u16string_view path, std::chrono::milliseconds time);
  FileLock(FileLock&&) noexcept;
  FileLock& operator=(FileLock&&) noexcept;
  ~FileLock();

private:
  struct State;
  explicit FileLock(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};

} // namespace kx::platform
