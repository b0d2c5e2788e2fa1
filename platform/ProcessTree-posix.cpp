#include "platform/ProcessTree-posix.h"

#include "platform/Posix.h"

#include <array>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/syscall.h>
#include <unistd.h>

namespace kx::platform::posix {

namespace {

// Empty for a process that has ended or that belongs to somebody else.
std::string EnvironmentOf(pid_t process) {
  const std::string path = "/proc/" + std::to_string(process) + "/environ";
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  std::string environment;
  std::array<char, 16384> block; // filled by read
  for (ssize_t count = 1; file.IsOpen() && count > 0;) {
    count = read(file.Get(), block.data(), block.size());
    if (count < 0 && errno == EINTR)
      count = 1;
    else if (count > 0)
      environment.append(block.data(), static_cast<std::size_t>(count));
  }
  return environment;
}

bool CarriesMark(pid_t process, const std::string& mark) {
  return EnvironmentOf(process).find(mark) != std::string::npos;
}

// Holds on to the process before it is looked at, so that a successor with the same number is never hit.
bool KillIfMarked(pid_t process, const std::string& mark) {
  const Descriptor handle(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
  if (!CarriesMark(process, mark)) return false;
  if (handle.IsOpen()) {
    syscall(SYS_pidfd_send_signal, handle.Get(), SIGKILL, nullptr, 0);
  } else {
    kill(process, SIGKILL);
  }
  return true;
}

std::size_t KillMarked(const std::string& mark) {
  const std::unique_ptr<DIR, int (*)(DIR*)> processes(opendir("/proc"), closedir);
  std::size_t found = 0;
  while (const dirent* entry = processes ? readdir(processes.get()) : nullptr) {
    const auto process = static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10));
    if (process > 1 && process != getpid() && KillIfMarked(process, mark)) ++found;
  }
  return found;
}

} // namespace

std::string NewRunMark() {
  static std::atomic<unsigned> runs{0};
  return std::to_string(getpid()) + "-" + std::to_string(++runs) + "-" + RandomLetters(16);
}

void KillTree(pid_t group, const std::string& mark) {
  kill(-group, SIGKILL);
  // A process may start another while the list is read, and the killed ones take a moment to go.
  constexpr int mostRounds = 2000;
  for (int round = 0; round < mostRounds && KillMarked(mark) > 0; ++round) {
    const timespec pause{0, 1'000'000};
    nanosleep(&pause, nullptr);
  }
}

} // namespace kx::platform::posix
