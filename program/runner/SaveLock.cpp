#include "program/runner/SaveLock.h"

namespace kx {

platform::Result<platform::FileLock> LockForSaving(std::u16string_view file, const TSavePatience& patience) {
  constexpr std::chrono::milliseconds usual(500);
  const auto start = std::chrono::steady_clock::now();
  bool isSaid = !patience.Say;
  return platform::FileLock::Acquire(file, patience.Longest, [&](std::u16string_view holder) {
    if (!isSaid && std::chrono::steady_clock::now() - start > usual) {
      patience.Say(u"Waiting for " + std::u16string(file) + u", held by " + std::u16string(holder));
      isSaid = true;
    }
    return !patience.GoesOn || patience.GoesOn();
  });
}

} // namespace kx
