#include "platform/ProcessTree-posix.h"

#include "platform/Posix.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sstream>
#include <sys/syscall.h>
#include <unistd.h>

namespace kx::platform::posix {

namespace {

// Empty for a process that has ended or that belongs to somebody else.
std::string ReadOf(pid_t process, const char* what) {
  const std::string path = "/proc/" + std::to_string(process) + "/" + what;
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  std::string bytes;
  std::array<char, 16384> block; // filled by read
  for (ssize_t count = 1; file.IsOpen() && count > 0;) {
    count = read(file.Get(), block.data(), block.size());
    if (count > 0) bytes.append(block.data(), static_cast<std::size_t>(count));
    if (count < 0 && errno == EINTR) count = 1;
  }
  return bytes;
}

// While a process takes up another program, its arguments and its environment read as empty for a moment. The
// same goes, for good, for what has ended and for the kernel's own threads.
bool IsBetweenPrograms(pid_t process) {
  if (!ReadOf(process, "cmdline").empty()) return false;
  const std::string status = ReadOf(process, "stat");
  const std::size_t name = status.rfind(')'); // a program's name may hold anything
  if (name == std::string::npos) return false;
  std::istringstream fields(status.substr(name + 1));
  char state = 0;
  long skipped = 0;
  unsigned long flags = 0;
  fields >> state >> skipped >> skipped >> skipped >> skipped >> skipped >> flags;
  constexpr unsigned long kernelThread = 0x00200000;
  return fields && state != 'Z' && state != 'X' && (flags & kernelThread) == 0;
}

struct Found {
  std::size_t Marked = 0;
  std::size_t Unclear = 0;
};

// Holds on to the process before it is looked at, so that a successor with the same number is never hit.
void KillIfMarked(pid_t process, const std::string& mark, Found& found) {
  const Descriptor handle(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
  const std::string environment = ReadOf(process, "environ");
  if (environment.find(mark) == std::string::npos) {
    found.Unclear += environment.empty() && IsBetweenPrograms(process) ? 1 : 0;
    return;
  }
  ++found.Marked;
  if (handle.IsOpen()) {
    syscall(SYS_pidfd_send_signal, handle.Get(), SIGKILL, nullptr, 0);
  } else {
    kill(process, SIGKILL);
  }
}

Found KillMarked(const std::string& mark) {
  const std::unique_ptr<DIR, int (*)(DIR*)> processes(opendir("/proc"), closedir);
  Found found;
  while (const dirent* entry = processes ? readdir(processes.get()) : nullptr) {
    const auto process = static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10));
    if (process > 1) KillIfMarked(process, mark, found);
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
  constexpr int mostUnclearRounds = 200;
  int unclear = 0;
  for (int round = 0; round < mostRounds && unclear < mostUnclearRounds; ++round) {
    const Found found = KillMarked(mark);
    if (found.Marked == 0 && found.Unclear == 0) return;
    unclear = found.Marked == 0 ? unclear + 1 : 0;
    const timespec pause{0, 1'000'000};
    nanosleep(&pause, nullptr);
  }
}

} // namespace kx::platform::posix
