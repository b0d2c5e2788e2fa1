// kx_watcher MARK: waits at standard input for the end of the program that started it, then kills the
// processes of a run (ProcessWatcher-posix.h). Lines of that input are their group.
#include "foundation/platform/ProcessTree-posix.h"

#include <csignal>
#include <cstdlib>
#include <iostream>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
    std::signal(number, SIG_IGN);
  kx::platform::posix::ProcessTree tree{.Mark = argv[1]};
  for (std::string line; std::getline(std::cin, line);)
    tree.Group = static_cast<pid_t>(std::strtol(line.c_str(), nullptr, 10));
  kx::platform::posix::KillTree(tree);
  return 0;
}
