// What starting a program needs, owned.
#pragma once

#include "foundation/platform/Posix.h"

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

namespace kx::platform::posix {

class SpawnActions {
public:
  SpawnActions() { posix_spawn_file_actions_init(&actions_); }
  SpawnActions(const SpawnActions&) = delete;
  SpawnActions& operator=(const SpawnActions&) = delete;
  ~SpawnActions() { posix_spawn_file_actions_destroy(&actions_); }
  posix_spawn_file_actions_t* Get() { return &actions_; }

private:
  posix_spawn_file_actions_t actions_{};
};

// A group or a session of its own (POSIX_SPAWN_SETPGROUP, POSIX_SPAWN_SETSID), and every signal as a fresh
// program expects it, whatever this one ignores or blocks.
class SpawnAttributes {
public:
  explicit SpawnAttributes(short apart) {
    posix_spawnattr_init(&attributes_);
    posix_spawnattr_setpgroup(&attributes_, 0);
    sigset_t signals;
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&attributes_, &signals);
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes_, &signals);
    const int flags = apart | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK;
    posix_spawnattr_setflags(&attributes_, static_cast<short>(flags));
  }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;
  ~SpawnAttributes() { posix_spawnattr_destroy(&attributes_); }
  const posix_spawnattr_t* Get() const { return &attributes_; }

private:
  posix_spawnattr_t attributes_{};
};

// Beyond the standard streams, so that putting a pipe in the place of one of them never closes another.
inline Descriptor AboveStandardStreams(Descriptor low) {
  if (low.Get() > STDERR_FILENO) return low;
  return Descriptor(fcntl(low.Get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

} // namespace kx::platform::posix
