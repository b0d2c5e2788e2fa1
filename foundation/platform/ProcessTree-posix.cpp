#include "foundation/platform/ProcessTree-posix.h"

#include "foundation/platform/Posix.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <map>
#include <memory>
#include <sstream>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

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

// What the system tells everybody about a process.
struct Status {
  pid_t Parent = 0;
  pid_t Group = 0;
  bool IsKernels = false;
  unsigned long long Start = 0; // with its number the name of a process for good
};

// Nothing for one that does not run any more.
std::optional<Status> StatusOf(pid_t process) {
  constexpr int fieldsToFlags = 3, fieldsToStart = 12;
  constexpr unsigned long kernelThread = 0x00200000;
  const std::string bytes = ReadOf(process, "stat");
  const std::size_t name = bytes.rfind(')'); // a program's name may hold anything
  if (name == std::string::npos) return std::nullopt;
  std::istringstream fields(bytes.substr(name + 1));
  Status status;
  char state = 0;
  long skipped = 0;
  unsigned long flags = 0;
  fields >> state >> status.Parent >> status.Group;
  for (int i = 0; i < fieldsToFlags; ++i)
    fields >> skipped;
  fields >> flags;
  for (int i = 0; i < fieldsToStart; ++i)
    fields >> skipped;
  fields >> status.Start;
  status.IsKernels = (flags & kernelThread) != 0;
  if (!fields || state == 'Z' || state == 'X') return std::nullopt;
  return status;
}

std::map<pid_t, Status> AllProcesses() {
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir("/proc"), closedir);
  std::map<pid_t, Status> processes;
  while (const dirent* entry = folder ? readdir(folder.get()) : nullptr) {
    const auto process = static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10));
    if (process <= 1) continue;
    if (const auto status = StatusOf(process)) processes.emplace(process, *status);
  }
  return processes;
}

class Members {
public:
  explicit Members(const ProcessTree& tree) : tree_(tree) {}

  // Looks around once more. True when there was something new, or something that could not be told.
  bool Grow() {
    const std::size_t before = members_.size();
    bool isUnclear = false;
    const auto processes = AllProcesses();
    for (const auto& [process, status] : processes) {
      if (!status.IsKernels && BelongsByItself(process, status, isUnclear)) Add(process, status);
    }
    for (std::size_t count = 0; count != members_.size();) {
      count = members_.size();
      for (const auto& [process, status] : processes)
        if (members_.contains(status.Parent)) Add(process, status);
    }
    return isUnclear || members_.size() > before;
  }

  bool AnyRuns() const {
    return std::ranges::any_of(members_,
                               [](const auto& member) { return Runs(member.first, member.second); });
  }

  void Signal(int number) const {
    for (const auto& [process, start] : members_)
      SignalOne(process, start, number);
  }

private:
  void Add(pid_t process, const Status& status) { members_.insert_or_assign(process, status.Start); }

  // While a process takes up another program, its arguments and its environment read as empty for a moment.
  bool BelongsByItself(pid_t process, const Status& status, bool& isUnclear) const {
    if (tree_.Group > 0 && status.Group == tree_.Group) return true;
    const std::string environment = ReadOf(process, "environ");
    if (environment.find(tree_.Mark) != std::string::npos) return true;
    isUnclear |= environment.empty() && ReadOf(process, "cmdline").empty() && StatusOf(process).has_value();
    return false;
  }

  static bool Runs(pid_t process, unsigned long long start) {
    const auto status = StatusOf(process);
    return status && status->Start == start;
  }

  // Holds on to the process before it is looked at, so that a successor with the same number is never hit.
  static void SignalOne(pid_t process, unsigned long long start, int number) {
    const Descriptor handle(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
    if (!Runs(process, start)) return;
    if (handle.IsOpen()) {
      syscall(SYS_pidfd_send_signal, handle.Get(), number, nullptr, 0);
    } else {
      kill(process, number);
    }
  }

  const ProcessTree& tree_;
  std::map<pid_t, unsigned long long> members_; // and when each was started
};

void Pause() {
  const timespec pause{0, 1'000'000};
  nanosleep(&pause, nullptr);
}

} // namespace

void AskTreeToEnd(const ProcessTree& tree) {
  Members members(tree);
  members.Grow();
  members.Signal(SIGTERM);
}

void KillTree(const ProcessTree& tree) {
  constexpr int mostUnclearRounds = 200;
  constexpr int mostRounds = 2000;
  // All of them are halted before the first is killed: a process may start another while the list is read,
  // and nobody knows any more whose a child was that has lost its parent.
  Members members(tree);
  for (int round = 0; round < mostUnclearRounds && members.Grow(); ++round) {
    members.Signal(SIGSTOP);
    Pause();
  }
  members.Signal(SIGKILL);
  for (int round = 0; round < mostRounds && members.AnyRuns(); ++round)
    Pause();
}

} // namespace kx::platform::posix
