#include "foundation/platform/FileLock.h"

#include "foundation/platform/Posix.h"
#include "foundation/platform/System.h"
#include "foundation/text/Encoding.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace kx::platform {

using namespace posix;

// Removed while it is still held, so that nobody who comes next holds a file that has lost its name. There
// before the lock is, so that nothing that fails in between leaves the file behind.
struct FileLock::State {
  explicit State(std::string path) : Path(std::move(path)) {}
  State(const State&) = delete;
  State& operator=(const State&) = delete;
  ~State() {
    if (File.IsOpen()) unlink(Path.c_str());
  }

  std::string Path;
  Descriptor File;
};

FileLock::FileLock(std::unique_ptr<State> state) : state_(std::move(state)) {}
FileLock::FileLock(FileLock&&) noexcept = default;
FileLock& FileLock::operator=(FileLock&&) noexcept = default;
FileLock::~FileLock() = default;

namespace {

// Whether the name still leads to this file: its last owner removes it.
bool IsStillNamed(const std::string& path, int file) {
  struct stat named {};
  struct stat opened {};
  return lstat(path.c_str(), &named) == 0 && fstat(file, &opened) == 0 && named.st_dev == opened.st_dev &&
         named.st_ino == opened.st_ino;
}

} // namespace

bool posix::TakeForLife(const std::string& native, const Descriptor& file) {
  if (flock(file.Get(), LOCK_EX | LOCK_NB) != 0) return errno != EWOULDBLOCK;
  return IsStillNamed(native, file.Get());
}

namespace {

// A lock that a killed process has left must not keep those out who may write the file.
void Share(int lock, const std::string& file) {
  struct stat info {};
  if (stat(file.c_str(), &info) != 0 || fchown(lock, info.st_uid, info.st_gid) != 0) return;
  if ((info.st_mode & S_IWGRP) != 0) fchmod(lock, S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP);
}

// For people; the lock itself is the system's.
void SignWithName(int lock) {
  const std::string text =
      "process " + std::to_string(getpid()) + " on " + text::ToUtf8(MachineName()) + "\n";
  if (ftruncate(lock, 0) == 0) static_cast<void>(pwrite(lock, text.data(), text.size(), 0) > 0);
}

std::u16string HolderOf(const std::string& path) {
  const Descriptor lock(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  std::array<char, 512> bytes{};
  const ssize_t count = lock.IsOpen() ? read(lock.Get(), bytes.data(), bytes.size()) : 0;
  const std::string_view text(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  const std::string_view line = text.substr(0, text.find('\n'));
  return line.empty() ? u"another program" : text::FromUtf8(line);
}

// Not open when somebody else has it; then errno is EWOULDBLOCK.
Descriptor TryToLock(const std::string& path) {
  constexpr int flags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  Descriptor lock(open(path.c_str(), flags | O_EXCL, 0600));
  const bool isNew = lock.IsOpen();
  if (!isNew && errno == EEXIST) lock = Descriptor(open(path.c_str(), flags, 0600));
  if (!lock.IsOpen()) return Descriptor();
  if (flock(lock.Get(), LOCK_EX | LOCK_NB) != 0) {
    const int error = errno;
    if (isNew && error != EWOULDBLOCK) unlink(path.c_str()); // the file system knows no locks
    errno = error;
    return Descriptor();
  }
  if (IsStillNamed(path, lock.Get())) return lock;
  errno = EWOULDBLOCK;
  return Descriptor();
}

} // namespace

Result<FileLock> FileLock::Acquire(std::u16string_view file, std::chrono::milliseconds time,
                                   const LockWaiting& waiting) {
  constexpr std::chrono::milliseconds again(5);
  const Result<std::string> native = RealPathForWriting(file);
  if (!native) return FileFailure(u"lock file", file, native.Message());
  const std::string path = *native + ".lock";
  auto state = std::make_unique<State>(path);
  const auto end = std::chrono::steady_clock::now() + time;
  for (;;) {
    state->File = TryToLock(path);
    if (state->File.IsOpen()) {
      Share(state->File.Get(), *native);
      SignWithName(state->File.Get());
      return FileLock(std::move(state));
    }
    if (errno != EWOULDBLOCK && errno != EINTR) return FileFailure(u"lock file", file, Reason(errno));
    const std::u16string holder = HolderOf(path);
    if (std::chrono::steady_clock::now() >= end || (waiting && !waiting(holder)))
      return FileFailure(u"lock file", file, u"It is held by " + holder);
    std::this_thread::sleep_for(again);
  }
}

} // namespace kx::platform
