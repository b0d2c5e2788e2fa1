#include "foundation/platform/ProcessWatcher-posix.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/Spawn-posix.h"
#include "foundation/text/Encoding.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kx::platform::posix {

int ProcessWatcher::Start(const std::string& mark) {
  std::array<int, 2> ends{-1, -1};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) return errno;
  alive_ = AboveStandardStreams(Descriptor(ends[0]));
  const Descriptor watched = AboveStandardStreams(Descriptor(ends[1]));
  if (!alive_.IsOpen() || !watched.IsOpen()) return EMFILE;

  // Neither the program's files nor its terminal nor its folder are kept busy.
  SpawnActions actions;
  posix_spawn_file_actions_adddup2(actions.Get(), watched.Get(), STDIN_FILENO);
  posix_spawn_file_actions_addopen(actions.Get(), STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(actions.Get(), STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addclosefrom_np(actions.Get(), STDERR_FILENO + 1);
  posix_spawn_file_actions_addchdir_np(actions.Get(), "/");
  const SpawnAttributes attributes(POSIX_SPAWN_SETSID);
  const std::string program = text::ToUtf8(ProgramDirectory()) + "/" + kWatcherProgram;
  std::string name = kWatcherProgram, text = mark;
  std::array<char*, 3> arguments{name.data(), text.data(), nullptr};
  std::array<char*, 1> environment{nullptr}; // none: it belongs to nobody's tree
  return posix_spawn(&process_, program.c_str(), actions.Get(), attributes.Get(), arguments.data(),
                     environment.data());
}

void ProcessWatcher::Add(pid_t group) {
  const std::string line = std::to_string(group) + "\n";
  [[maybe_unused]] const ssize_t count = send(alive_.Get(), line.data(), line.size(), MSG_NOSIGNAL);
}

void ProcessWatcher::Dismiss() {
  const pid_t process = std::exchange(process_, 0);
  if (process <= 0) return;
  kill(process, SIGKILL); // before it sees the end of the connection
  while (waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
  }
}

} // namespace kx::platform::posix
