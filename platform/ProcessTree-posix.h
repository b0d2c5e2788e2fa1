// Ends a program and everything that it started.
#pragma once

#include <string>
#include <sys/types.h>

namespace kx::platform::posix {

// A text that no other run on this machine has. Handed down in the environment, it finds a run's processes
// wherever they have moved to: into a group or a session of their own, or under another parent.
std::string NewRunMark();

// The name of the environment variable that carries the marks of a run and of the runs around it.
constexpr const char* kRunMarkVariable = "KX_RUN_ID";

// Kills the process group and every process with the mark; on return none of them runs any more.
void KillTree(pid_t group, const std::string& mark);

} // namespace kx::platform::posix
