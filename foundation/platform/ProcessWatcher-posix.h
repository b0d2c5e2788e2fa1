// What a tool has started does not outlive this program, however this program ends.
#pragma once

#include "foundation/platform/Posix.h"

#include <string>
#include <sys/types.h>

namespace kx::platform::posix {

// The name of the watching program, which lies beside every program of this system.
constexpr const char* kWatcherProgram = "kx_watcher";

// A program of its own, in a session of its own, that waits for the end of this one: when that comes while
// this object lives, be it by a signal that nobody can catch, it kills the tree. (The signal that Linux sends
// at a parent's death reaches only the first process of a tree, and is sent when a thread ends.)
class ProcessWatcher {
public:
  ProcessWatcher() = default;
  ProcessWatcher(const ProcessWatcher&) = delete;
  ProcessWatcher& operator=(const ProcessWatcher&) = delete;
  ~ProcessWatcher() { Dismiss(); }

  // Watches the processes with this mark. The error number, or 0.
  int Start(const std::string& mark);
  // And those of the group.
  void Add(pid_t group);
  // The tree has ended, or what is left of it may stay.
  void Dismiss();

private:
  Descriptor alive_; // closed by the system when this program ends
  pid_t process_ = 0;
};

} // namespace kx::platform::posix
