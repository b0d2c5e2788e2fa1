// A program and everything that it started, to be asked or made to end. No other part of this room is used
// here, so that the watcher (ProcessWatcher-posix.h) stays a small program.
#pragma once

#include <string>
#include <string_view>
#include <sys/types.h>

namespace kx::platform::posix {

// The processes of one run are found by its mark, a text that nobody else on this machine has and that is
// handed down in the environment: so those are found too that have moved into a group or a session of their
// own, or have lost their parent. Those of its group belong to it, and all that descends from either,
// whatever has become of their environment.
struct ProcessTree {
  pid_t Group = 0; // 0: none
  std::string Mark;
};

// Sends SIGTERM once to each process of the tree.
void AskTreeToEnd(const ProcessTree& tree);
// On return none of them runs any more.
void KillTree(const ProcessTree& tree);

} // namespace kx::platform::posix
