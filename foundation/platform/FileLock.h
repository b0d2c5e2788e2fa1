// One at a time, among all processes of this machine.
#pragma once

#include "foundation/platform/Result.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace kx::platform {

// Called again and again while somebody else holds a lock, with who that is ("process 12 on build7"); False
// gives up.
using LockWaiting = std::function<bool(std::u16string_view holder)>;

// Whoever reads a file, changes it and writes it back holds this meanwhile. The lock is a file beside the one
// that it is for ("nightly.kxproj.lock"), behind all links that lead there, so that everybody means the same
// one. It is there only while somebody holds it and says who; the system frees the lock of a process that
// ends, however it ends. Whoever may write the file may lock it. Two programs of one machine always see each
// other; those of two machines do where their file system passes locks on.
class FileLock {
public:
  // Waits for whoever holds it. Fails when the time is over or the lock cannot be made.
  static Result<FileLock> Acquire(std::u16string_view file, std::chrono::milliseconds time,
                                  const LockWaiting& waiting = {});
  FileLock(FileLock&&) noexcept;
  FileLock& operator=(FileLock&&) noexcept;
  ~FileLock();

private:
  struct State;
  explicit FileLock(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};

} // namespace kx::platform
